// Results for the performance page.
#pragma once

#include <string>

#include "results.h"

namespace prismo::bench {

// The machine and one table per kind of thread, sizes side by side, between two marker lines of a Markdown
// document; a file without them is made or extended.
void WriteMarkdown(const Report& report, const std::string& path);

}  // namespace prismo::bench

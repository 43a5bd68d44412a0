// Results for people.
#pragma once

#include <string>

#include "results.h"

namespace prismo::bench {

// What the columns mean.
std::string Method(int rounds);

// A table on the standard output, row by row as results come in.
void PrintHead();
void PrintRow(const Result& result);

// The machine and one table per kind of thread, sizes side by side, between two marker lines of a Markdown
// document; a file without them is made or extended.
void WriteMarkdown(const Report& report, const std::string& path);

}  // namespace prismo::bench

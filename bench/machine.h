// What the figures were measured on.
#pragma once

#include <string>
#include <vector>

namespace prismo::bench {

// One fact a line, "processor: ..." and so on.
std::vector<std::string> DescribeMachine();

}  // namespace prismo::bench

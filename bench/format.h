#pragma once

#include <cstdio>
#include <string>

namespace prismo::bench {

// printf for one line at most.
template <class... Arguments>
std::string Format(const char* format, Arguments... arguments) {
  char text[256];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

}  // namespace prismo::bench

// As much of JSON as results are written in.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace prismo::bench {

struct Json {
  std::string text;                                   // of a string
  double number = 0;                                  // of a number
  std::vector<std::pair<std::string, Json>> members;  // of an object; of an array without names

  // The first member of this name, or one that is empty.
  const Json& operator[](std::string_view name) const;
};

// Throws std::invalid_argument. Letters given by their codes (\u) become question marks.
Json ParseJson(std::string_view text);

std::string Quoted(std::string_view text);

}  // namespace prismo::bench

// As much of JSON as results are written in.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace prismo::bench {

struct Json {
  std::string name;           // of a member of an object
  std::string text;           // of a string
  double number = 0;          // of a number
  std::vector<Json> members;  // of an object or an array

  // The first member of this name, or one that is empty.
  const Json& operator[](std::string_view member) const;
};

// Throws std::invalid_argument. Letters given by their codes (\u) become question marks.
Json ParseJson(std::string_view text);

std::string Quoted(std::string_view text);

}  // namespace prismo::bench

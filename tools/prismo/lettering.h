// Writing in pictures, with capitals of 5 by 7 dots.
#pragma once

#include <cstdint>
#include <string_view>

#include "frame.h"

namespace prismo::tool {

constexpr int kLetterHeight = 7;   // dots
constexpr int kLetterAdvance = 6;  // dots from one letter to the next

// Whether a dot of the text, counted from its upper left corner, is inked. Letters that are not capitals,
// digits or one of "-.:%" are blank.
bool Inked(std::string_view text, int column, int row);

// Writes white on a picture of B, G, R, with squares of `scale` pixels for dots; what does not fit is cut
// off.
void Write(Picture& picture, uint32_t left, uint32_t top, uint32_t scale, std::string_view text);

}  // namespace prismo::tool

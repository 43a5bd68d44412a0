// Sizes that tests go through, and how much of a long test is run.
#pragma once

#include <cstdint>
#include <vector>

#include "reference/pictures.h"
#include "support/compare.h"

namespace prismo::test {

#if defined(__SANITIZE_THREAD__)
inline constexpr bool kThreadSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kThreadSanitized = __has_feature(thread_sanitizer);
#else
inline constexpr bool kThreadSanitized = false;
#endif

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kSanitized =
    kThreadSanitized || __has_feature(address_sanitizer) || __has_feature(undefined_behavior_sanitizer);
#else
inline constexpr bool kSanitized = kThreadSanitized;
#endif

inline constexpr uint8_t kOffOn[] = {0, 1};  // values of a flag

// Every width up to a little more than two vectors of the longest kind, then around later multiples. No
// thread depends on the width, so a few of them do under ThreadSanitizer.
inline std::vector<uint32_t> Widths(uint32_t unit = 1) {
  std::vector<uint32_t> widths;
  const uint32_t step = kThreadSanitized ? 13 * unit : unit;
  for (uint32_t width = unit; width <= 140; width += step) widths.push_back(width);
  for (const uint32_t around : {192u, 256u, 384u, 640u}) {
    for (const uint32_t width : {around - unit, around, around + unit}) widths.push_back(width / unit * unit);
  }
  return widths;
}

inline PixelGrid GridOf(reference::Output output, uint32_t width) {
  return {reference::Picture::Pitch(output, width), reference::Picture::PixelBytes(output)};
}

// The outputs of a routine: BGRA, or BGR and Pad by its flag.
inline std::vector<reference::Output> OutputsOf(bool bgra) {
  using enum reference::Output;
  return bgra ? std::vector{kBgra} : std::vector{kBgr, kPad};
}

}  // namespace prismo::test

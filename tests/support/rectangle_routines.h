// The rectangle routines and converters under their names, called alike.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "PrismoUtl.h"
#include "reference/bayer.h"
#include "support/routines.h"

namespace prismo::test {

struct RectangleArguments {
  uint32_t src_width, src_height;
  reference::Rectangle rectangle;
};

using BgraRectangle = uint32_t (*)(void*, const void*, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                                   uint32_t, uint32_t, uint32_t, uint32_t, uint32_t);
using BgrRectangle = uint32_t (*)(void*, const void*, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                                  uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint8_t);
using BgrRectangleConverter = uint32_t (*)(void*, const void*, uint32_t, uint32_t, uint32_t, uint32_t,
                                           uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                                           uint8_t, uint8_t);

using RectangleCall = std::function<uint32_t(void* dst, const void* src, const RectangleArguments& a,
                                             uint8_t pad, uint8_t pool)>;

inline RectangleCall BgraRoutine(BgraRectangle f) {
  return [f](void* d, const void* s, const RectangleArguments& a, uint8_t, uint8_t) {
    const reference::Rectangle& r = a.rectangle;
    return f(d, s, a.src_width, a.src_height, r.left, r.top, r.width, r.height, r.dst_width, r.dst_height,
             r.dst_left, r.dst_top);
  };
}
inline RectangleCall BgrRoutine(BgrRectangle f) {
  return [f](void* d, const void* s, const RectangleArguments& a, uint8_t pad, uint8_t) {
    const reference::Rectangle& r = a.rectangle;
    return f(d, s, a.src_width, a.src_height, r.left, r.top, r.width, r.height, r.dst_width, r.dst_height,
             r.dst_left, r.dst_top, pad);
  };
}
inline RectangleCall BgraConverter(BgrRectangle f) {
  return [f](void* d, const void* s, const RectangleArguments& a, uint8_t, uint8_t pool) {
    const reference::Rectangle& r = a.rectangle;
    return f(d, s, a.src_width, a.src_height, r.left, r.top, r.width, r.height, r.dst_width, r.dst_height,
             r.dst_left, r.dst_top, pool);
  };
}
inline RectangleCall BgrConverter(BgrRectangleConverter f) {
  return [f](void* d, const void* s, const RectangleArguments& a, uint8_t pad, uint8_t pool) {
    const reference::Rectangle& r = a.rectangle;
    return f(d, s, a.src_width, a.src_height, r.left, r.top, r.width, r.height, r.dst_width, r.dst_height,
             r.dst_left, r.dst_top, pad, pool);
  };
}

struct RectangleRoutine {
  const char* name;
  reference::Phase phase;  // of the rectangle's own top left pixel
  bool bgra;
  On on;
  RectangleCall call;
};

struct RectangleConverter {
  const char* name;
  reference::Phase phase;  // of the frame
  bool bgra;
  RectangleCall call;
};

inline const std::vector<RectangleRoutine>& RectangleRoutines() {
  using enum reference::Phase;
  static const std::vector<RectangleRoutine> routines = {
      {"RectBG8ToBGRA_SP_ACPI", kBg, true, On::kCaller, BgraRoutine(RectBG8ToBGRA_SP_ACPI)},
      {"RectBG8ToBGR_SP_ACPI", kBg, false, On::kCaller, BgrRoutine(RectBG8ToBGR_SP_ACPI)},
      {"RectGB8ToBGRA_SP_ACPI", kGb, true, On::kCaller, BgraRoutine(RectGB8ToBGRA_SP_ACPI)},
      {"RectGB8ToBGR_SP_ACPI", kGb, false, On::kCaller, BgrRoutine(RectGB8ToBGR_SP_ACPI)},
      {"RectGR8ToBGRA_SP_ACPI", kGr, true, On::kCaller, BgraRoutine(RectGR8ToBGRA_SP_ACPI)},
      {"RectGR8ToBGR_SP_ACPI", kGr, false, On::kCaller, BgrRoutine(RectGR8ToBGR_SP_ACPI)},
      {"RectRG8ToBGRA_SP_ACPI", kRg, true, On::kCaller, BgraRoutine(RectRG8ToBGRA_SP_ACPI)},
      {"RectRG8ToBGR_SP_ACPI", kRg, false, On::kCaller, BgrRoutine(RectRG8ToBGR_SP_ACPI)},
      {"RectBG8ToBGRA_MP_ACPI", kBg, true, On::kPool, BgraRoutine(RectBG8ToBGRA_MP_ACPI)},
      {"RectBG8ToBGR_MP_ACPI", kBg, false, On::kPool, BgrRoutine(RectBG8ToBGR_MP_ACPI)},
      {"RectGB8ToBGRA_MP_ACPI", kGb, true, On::kPool, BgraRoutine(RectGB8ToBGRA_MP_ACPI)},
      {"RectGB8ToBGR_MP_ACPI", kGb, false, On::kPool, BgrRoutine(RectGB8ToBGR_MP_ACPI)},
      {"RectGR8ToBGRA_MP_ACPI", kGr, true, On::kPool, BgraRoutine(RectGR8ToBGRA_MP_ACPI)},
      {"RectGR8ToBGR_MP_ACPI", kGr, false, On::kPool, BgrRoutine(RectGR8ToBGR_MP_ACPI)},
      {"RectRG8ToBGRA_MP_ACPI", kRg, true, On::kPool, BgraRoutine(RectRG8ToBGRA_MP_ACPI)},
      {"RectRG8ToBGR_MP_ACPI", kRg, false, On::kPool, BgrRoutine(RectRG8ToBGR_MP_ACPI)},
  };
  return routines;
}

inline const std::vector<RectangleConverter>& RectangleConverters() {
  using enum reference::Phase;
  static const std::vector<RectangleConverter> converters = {
      {"ConvBG8RectToBGRA_ACPI", kBg, true, BgraConverter(ConvBG8RectToBGRA_ACPI)},
      {"ConvBG8RectToBGR_ACPI", kBg, false, BgrConverter(ConvBG8RectToBGR_ACPI)},
      {"ConvGB8RectToBGRA_ACPI", kGb, true, BgraConverter(ConvGB8RectToBGRA_ACPI)},
      {"ConvGB8RectToBGR_ACPI", kGb, false, BgrConverter(ConvGB8RectToBGR_ACPI)},
      {"ConvGR8RectToBGRA_ACPI", kGr, true, BgraConverter(ConvGR8RectToBGRA_ACPI)},
      {"ConvGR8RectToBGR_ACPI", kGr, false, BgrConverter(ConvGR8RectToBGR_ACPI)},
      {"ConvRG8RectToBGRA_ACPI", kRg, true, BgraConverter(ConvRG8RectToBGRA_ACPI)},
      {"ConvRG8RectToBGR_ACPI", kRg, false, BgrConverter(ConvRG8RectToBGR_ACPI)},
  };
  return converters;
}

}  // namespace prismo::test

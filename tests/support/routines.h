// Every conversion routine under its name, called alike: tests enumerate them and compare them with the
// reference of their kind.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "reference/bayer.h"
#include "reference/colour.h"
#include "reference/yuv.h"

namespace prismo::test {

// A routine ignores the arguments that it does not have.
using RoutineCall = std::function<uint32_t(void* dst, const void* src, uint32_t width, uint32_t height,
                                           uint8_t shift, uint8_t pad)>;

using PlainRoutine = uint32_t (*)(void*, const void*, uint32_t, uint32_t);
using ByteRoutine = uint32_t (*)(void*, const void*, uint32_t, uint32_t, uint8_t);
using TwoByteRoutine = uint32_t (*)(void*, const void*, uint32_t, uint32_t, uint8_t, uint8_t);

// What the arguments behind the height mean.
inline RoutineCall Plain(PlainRoutine f) {
  return [f](void* d, const void* s, uint32_t w, uint32_t h, uint8_t, uint8_t) { return f(d, s, w, h); };
}
inline RoutineCall Padded(ByteRoutine f) {
  return [f](void* d, const void* s, uint32_t w, uint32_t h, uint8_t, uint8_t pad) {
    return f(d, s, w, h, pad);
  };
}
inline RoutineCall Shifted(ByteRoutine f) {
  return [f](void* d, const void* s, uint32_t w, uint32_t h, uint8_t shift, uint8_t) {
    return f(d, s, w, h, shift);
  };
}
inline RoutineCall ShiftedPadded(TwoByteRoutine f) {
  return [f](void* d, const void* s, uint32_t w, uint32_t h, uint8_t shift, uint8_t pad) {
    return f(d, s, w, h, shift, pad);
  };
}
// A trailing argument that must not matter.
inline RoutineCall Reserved(ByteRoutine f) {
  return
      [f](void* d, const void* s, uint32_t w, uint32_t h, uint8_t, uint8_t) { return f(d, s, w, h, 0xA5); };
}
inline RoutineCall ShiftedReserved(TwoByteRoutine f) {
  return [f](void* d, const void* s, uint32_t w, uint32_t h, uint8_t shift, uint8_t) {
    return f(d, s, w, h, shift, 0xA5);
  };
}

enum class On : uint8_t { kCaller, kPool };

template <class Source>
struct Routine {
  const char* name;
  Source source;
  bool words;  // samples of 16 bits, with a shift
  bool bgra;   // else BGR, with a pad flag
  On on;
  RoutineCall call;
};

using BayerRoutine = Routine<reference::Phase>;
using PackedRoutine = Routine<reference::PackedFrame::Order>;
using YuvRoutine = Routine<reference::YuvLayout>;

inline const std::vector<BayerRoutine>& BilinearRoutines() {
  static const std::vector<BayerRoutine> routines = {
      {"ByrBG8ToBGRA_SP", reference::Phase::kBg, false, true, On::kCaller, Plain(ByrBG8ToBGRA_SP)},
      {"ByrBG8ToBGR_SP", reference::Phase::kBg, false, false, On::kCaller, Padded(ByrBG8ToBGR_SP)},
      {"ByrBGNToBGRA_SP", reference::Phase::kBg, true, true, On::kCaller, Shifted(ByrBGNToBGRA_SP)},
      {"ByrBGNToBGR_SP", reference::Phase::kBg, true, false, On::kCaller, ShiftedPadded(ByrBGNToBGR_SP)},
      {"ByrGB8ToBGRA_SP", reference::Phase::kGb, false, true, On::kCaller, Plain(ByrGB8ToBGRA_SP)},
      {"ByrGB8ToBGR_SP", reference::Phase::kGb, false, false, On::kCaller, Padded(ByrGB8ToBGR_SP)},
      {"ByrGBNToBGRA_SP", reference::Phase::kGb, true, true, On::kCaller, Shifted(ByrGBNToBGRA_SP)},
      {"ByrGBNToBGR_SP", reference::Phase::kGb, true, false, On::kCaller, ShiftedPadded(ByrGBNToBGR_SP)},
      {"ByrGR8ToBGRA_SP", reference::Phase::kGr, false, true, On::kCaller, Plain(ByrGR8ToBGRA_SP)},
      {"ByrGR8ToBGR_SP", reference::Phase::kGr, false, false, On::kCaller, Padded(ByrGR8ToBGR_SP)},
      {"ByrGRNToBGRA_SP", reference::Phase::kGr, true, true, On::kCaller, Shifted(ByrGRNToBGRA_SP)},
      {"ByrGRNToBGR_SP", reference::Phase::kGr, true, false, On::kCaller, ShiftedPadded(ByrGRNToBGR_SP)},
      {"ByrRG8ToBGRA_SP", reference::Phase::kRg, false, true, On::kCaller, Plain(ByrRG8ToBGRA_SP)},
      {"ByrRG8ToBGR_SP", reference::Phase::kRg, false, false, On::kCaller, Padded(ByrRG8ToBGR_SP)},
      {"ByrRGNToBGRA_SP", reference::Phase::kRg, true, true, On::kCaller, Shifted(ByrRGNToBGRA_SP)},
      {"ByrRGNToBGR_SP", reference::Phase::kRg, true, false, On::kCaller, ShiftedPadded(ByrRGNToBGR_SP)},
      {"ByrBG8ToBGRA_MP", reference::Phase::kBg, false, true, On::kPool, Plain(ByrBG8ToBGRA_MP)},
      {"ByrBG8ToBGR_MP", reference::Phase::kBg, false, false, On::kPool, Padded(ByrBG8ToBGR_MP)},
      {"ByrBGNToBGRA_MP", reference::Phase::kBg, true, true, On::kPool, Shifted(ByrBGNToBGRA_MP)},
      {"ByrBGNToBGR_MP", reference::Phase::kBg, true, false, On::kPool, ShiftedPadded(ByrBGNToBGR_MP)},
      {"ByrGB8ToBGRA_MP", reference::Phase::kGb, false, true, On::kPool, Plain(ByrGB8ToBGRA_MP)},
      {"ByrGB8ToBGR_MP", reference::Phase::kGb, false, false, On::kPool, Padded(ByrGB8ToBGR_MP)},
      {"ByrGBNToBGRA_MP", reference::Phase::kGb, true, true, On::kPool, Shifted(ByrGBNToBGRA_MP)},
      {"ByrGBNToBGR_MP", reference::Phase::kGb, true, false, On::kPool, ShiftedPadded(ByrGBNToBGR_MP)},
      {"ByrGR8ToBGRA_MP", reference::Phase::kGr, false, true, On::kPool, Plain(ByrGR8ToBGRA_MP)},
      {"ByrGR8ToBGR_MP", reference::Phase::kGr, false, false, On::kPool, Padded(ByrGR8ToBGR_MP)},
      {"ByrGRNToBGRA_MP", reference::Phase::kGr, true, true, On::kPool, Shifted(ByrGRNToBGRA_MP)},
      {"ByrGRNToBGR_MP", reference::Phase::kGr, true, false, On::kPool, ShiftedPadded(ByrGRNToBGR_MP)},
      {"ByrRG8ToBGRA_MP", reference::Phase::kRg, false, true, On::kPool, Plain(ByrRG8ToBGRA_MP)},
      {"ByrRG8ToBGR_MP", reference::Phase::kRg, false, false, On::kPool, Padded(ByrRG8ToBGR_MP)},
      {"ByrRGNToBGRA_MP", reference::Phase::kRg, true, true, On::kPool, Shifted(ByrRGNToBGRA_MP)},
      {"ByrRGNToBGR_MP", reference::Phase::kRg, true, false, On::kPool, ShiftedPadded(ByrRGNToBGR_MP)},
  };
  return routines;
}

inline const std::vector<BayerRoutine>& AdaptiveRoutines() {
  static const std::vector<BayerRoutine> routines = {
      {"ByrBG8ToBGRA_SP_ACPI", reference::Phase::kBg, false, true, On::kCaller, Plain(ByrBG8ToBGRA_SP_ACPI)},
      {"ByrBG8ToBGR_SP_ACPI", reference::Phase::kBg, false, false, On::kCaller, Padded(ByrBG8ToBGR_SP_ACPI)},
      {"ByrGB8ToBGRA_SP_ACPI", reference::Phase::kGb, false, true, On::kCaller, Plain(ByrGB8ToBGRA_SP_ACPI)},
      {"ByrGB8ToBGR_SP_ACPI", reference::Phase::kGb, false, false, On::kCaller, Padded(ByrGB8ToBGR_SP_ACPI)},
      {"ByrGR8ToBGRA_SP_ACPI", reference::Phase::kGr, false, true, On::kCaller, Plain(ByrGR8ToBGRA_SP_ACPI)},
      {"ByrGR8ToBGR_SP_ACPI", reference::Phase::kGr, false, false, On::kCaller, Padded(ByrGR8ToBGR_SP_ACPI)},
      {"ByrRG8ToBGRA_SP_ACPI", reference::Phase::kRg, false, true, On::kCaller, Plain(ByrRG8ToBGRA_SP_ACPI)},
      {"ByrRG8ToBGR_SP_ACPI", reference::Phase::kRg, false, false, On::kCaller, Padded(ByrRG8ToBGR_SP_ACPI)},
      {"ByrBG8ToBGRA_MP_ACPI", reference::Phase::kBg, false, true, On::kPool, Plain(ByrBG8ToBGRA_MP_ACPI)},
      {"ByrBG8ToBGR_MP_ACPI", reference::Phase::kBg, false, false, On::kPool, Padded(ByrBG8ToBGR_MP_ACPI)},
      {"ByrGB8ToBGRA_MP_ACPI", reference::Phase::kGb, false, true, On::kPool, Plain(ByrGB8ToBGRA_MP_ACPI)},
      {"ByrGB8ToBGR_MP_ACPI", reference::Phase::kGb, false, false, On::kPool, Padded(ByrGB8ToBGR_MP_ACPI)},
      {"ByrGR8ToBGRA_MP_ACPI", reference::Phase::kGr, false, true, On::kPool, Plain(ByrGR8ToBGRA_MP_ACPI)},
      {"ByrGR8ToBGR_MP_ACPI", reference::Phase::kGr, false, false, On::kPool, Padded(ByrGR8ToBGR_MP_ACPI)},
      {"ByrRG8ToBGRA_MP_ACPI", reference::Phase::kRg, false, true, On::kPool, Plain(ByrRG8ToBGRA_MP_ACPI)},
      {"ByrRG8ToBGR_MP_ACPI", reference::Phase::kRg, false, false, On::kPool, Padded(ByrRG8ToBGR_MP_ACPI)},
  };
  return routines;
}

inline const std::vector<PackedRoutine>& MonoRoutines() {
  constexpr auto kGrey = reference::PackedFrame::Order::kGrey;
  static const std::vector<PackedRoutine> routines = {
      {"Mono8ToBGRA_SP", kGrey, false, true, On::kCaller, Reserved(Mono8ToBGRA_SP)},
      {"MonoNToBGRA_SP", kGrey, true, true, On::kCaller, ShiftedReserved(MonoNToBGRA_SP)},
      {"Mono8ToBGR_SP", kGrey, false, false, On::kCaller,
       [](void* d, const void* s, uint32_t w, uint32_t h, uint8_t, uint8_t pad) {
         return Mono8ToBGR_SP(d, s, w, static_cast<int32_t>(h), pad);
       }},
      {"MonoNToBGR_SP", kGrey, true, false, On::kCaller,
       [](void* d, const void* s, uint32_t w, uint32_t h, uint8_t shift, uint8_t pad) {
         return MonoNToBGR_SP(d, s, static_cast<int32_t>(w), static_cast<int32_t>(h), shift, pad);
       }},
      {"Mono8ToBGRA_MP", kGrey, false, true, On::kPool, Plain(Mono8ToBGRA_MP)},
      {"MonoNToBGRA_MP", kGrey, true, true, On::kPool, Shifted(MonoNToBGRA_MP)},
      {"Mono8ToBGR_MP", kGrey, false, false, On::kPool, Padded(Mono8ToBGR_MP)},
      {"MonoNToBGR_MP", kGrey, true, false, On::kPool, ShiftedPadded(MonoNToBGR_MP)},
  };
  return routines;
}

inline const std::vector<PackedRoutine>& PackedRoutines() {
  static const std::vector<PackedRoutine> routines = {
      {"RGB8PToBGRA_SP", reference::PackedFrame::Order::kRgb, false, true, On::kCaller,
       Plain(RGB8PToBGRA_SP)},
      {"RGBNToBGRA_SP", reference::PackedFrame::Order::kRgb, true, true, On::kCaller, Shifted(RGBNToBGRA_SP)},
      {"RGB8PToBGR_SP", reference::PackedFrame::Order::kRgb, false, false, On::kCaller,
       Padded(RGB8PToBGR_SP)},
      {"RGBNToBGR_SP", reference::PackedFrame::Order::kRgb, true, false, On::kCaller,
       ShiftedPadded(RGBNToBGR_SP)},
      {"BGR8PToBGRA_SP", reference::PackedFrame::Order::kBgr, false, true, On::kCaller,
       Plain(BGR8PToBGRA_SP)},
      {"BGRNToBGRA_SP", reference::PackedFrame::Order::kBgr, true, true, On::kCaller, Shifted(BGRNToBGRA_SP)},
      {"BGR8PToBGR_SP", reference::PackedFrame::Order::kBgr, false, false, On::kCaller,
       Padded(BGR8PToBGR_SP)},
      {"BGRNToBGR_SP", reference::PackedFrame::Order::kBgr, true, false, On::kCaller,
       ShiftedPadded(BGRNToBGR_SP)},
      {"RGB8PToBGRA_MP", reference::PackedFrame::Order::kRgb, false, true, On::kPool,
       Reserved(RGB8PToBGRA_MP)},
      {"RGBNToBGRA_MP", reference::PackedFrame::Order::kRgb, true, true, On::kPool,
       ShiftedReserved(RGBNToBGRA_MP)},
      {"RGB8PToBGR_MP", reference::PackedFrame::Order::kRgb, false, false, On::kPool, Padded(RGB8PToBGR_MP)},
      {"RGBNToBGR_MP", reference::PackedFrame::Order::kRgb, true, false, On::kPool,
       ShiftedPadded(RGBNToBGR_MP)},
      {"BGR8PToBGRA_MP", reference::PackedFrame::Order::kBgr, false, true, On::kPool,
       Reserved(BGR8PToBGRA_MP)},
      {"BGRNToBGRA_MP", reference::PackedFrame::Order::kBgr, true, true, On::kPool,
       ShiftedReserved(BGRNToBGRA_MP)},
      {"BGR8PToBGR_MP", reference::PackedFrame::Order::kBgr, false, false, On::kPool, Padded(BGR8PToBGR_MP)},
      {"BGRNToBGR_MP", reference::PackedFrame::Order::kBgr, true, false, On::kPool,
       ShiftedPadded(BGRNToBGR_MP)},
      {"BGRA8ToBGRA_SP", reference::PackedFrame::Order::kBgra, false, true, On::kCaller,
       Plain(BGRA8ToBGRA_SP)},
      {"BGRA8ToBGR_SP", reference::PackedFrame::Order::kBgra, false, false, On::kCaller,
       [](void* d, const void* s, uint32_t w, uint32_t h, uint8_t, uint8_t pad) {
         return BGRA8ToBGR_SP(d, s, static_cast<int32_t>(w), static_cast<int32_t>(h), pad);
       }},
  };
  return routines;
}

inline const std::vector<YuvRoutine>& YuvRoutines() {
  static const std::vector<YuvRoutine> routines = {
      {"YUV411PToBGRA_SP", reference::YuvLayout::k411, false, true, On::kCaller, Plain(YUV411PToBGRA_SP)},
      {"YUV411PToBGR_SP", reference::YuvLayout::k411, false, false, On::kCaller, Padded(YUV411PToBGR_SP)},
      {"YUV422PToBGRA_SP", reference::YuvLayout::k422, false, true, On::kCaller, Plain(YUV422PToBGRA_SP)},
      {"YUV422PToBGR_SP", reference::YuvLayout::k422, false, false, On::kCaller, Padded(YUV422PToBGR_SP)},
      {"YUV444PToBGRA_SP", reference::YuvLayout::k444, false, true, On::kCaller, Plain(YUV444PToBGRA_SP)},
      {"YUV444PToBGR_SP", reference::YuvLayout::k444, false, false, On::kCaller, Padded(YUV444PToBGR_SP)},
      {"YUV411PToBGRA_MP", reference::YuvLayout::k411, false, true, On::kPool, Plain(YUV411PToBGRA_MP)},
      {"YUV411PToBGR_MP", reference::YuvLayout::k411, false, false, On::kPool, Padded(YUV411PToBGR_MP)},
      {"YUV422PToBGRA_MP", reference::YuvLayout::k422, false, true, On::kPool, Plain(YUV422PToBGRA_MP)},
      {"YUV422PToBGR_MP", reference::YuvLayout::k422, false, false, On::kPool, Padded(YUV422PToBGR_MP)},
      {"YUV444PToBGRA_MP", reference::YuvLayout::k444, false, true, On::kPool, Plain(YUV444PToBGRA_MP)},
      {"YUV444PToBGR_MP", reference::YuvLayout::k444, false, false, On::kPool, Padded(YUV444PToBGR_MP)},
  };
  return routines;
}

// The routine of a name, of any family.
inline const RoutineCall& RoutineNamed(const std::string& name) {
  static const std::map<std::string, RoutineCall> routines = [] {
    std::map<std::string, RoutineCall> all;
    for (const BayerRoutine& routine : BilinearRoutines()) all[routine.name] = routine.call;
    for (const BayerRoutine& routine : AdaptiveRoutines()) all[routine.name] = routine.call;
    for (const PackedRoutine& routine : MonoRoutines()) all[routine.name] = routine.call;
    for (const PackedRoutine& routine : PackedRoutines()) all[routine.name] = routine.call;
    for (const YuvRoutine& routine : YuvRoutines()) all[routine.name] = routine.call;
    return all;
  }();
  const auto found = routines.find(name);
  if (found == routines.end()) throw std::invalid_argument("no routine " + name);
  return found->second;
}

}  // namespace prismo::test

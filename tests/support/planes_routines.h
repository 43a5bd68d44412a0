// The routines that write three planes under their names, called alike.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "PrismoUtl.h"
#include "reference/bayer.h"
#include "reference/colour.h"
#include "support/routines.h"

namespace prismo::test {

using PlanesCall = std::function<uint32_t(void* b, void* g, void* r, const void* src, uint32_t width,
                                          uint32_t height, uint8_t pad)>;

struct BayerPlanesRoutine {
  const char* name;
  reference::Phase phase;
  On on;
  PlanesCall call;
};

inline const std::vector<BayerPlanesRoutine>& BayerPlanesRoutines() {
  using enum reference::Phase;
  static const std::vector<BayerPlanesRoutine> routines = {
      {"ByrBG8ToBGRFS_SP", kBg, On::kCaller, ByrBG8ToBGRFS_SP},
      {"ByrGB8ToBGRFS_SP", kGb, On::kCaller, ByrGB8ToBGRFS_SP},
      {"ByrGR8ToBGRFS_SP", kGr, On::kCaller, ByrGR8ToBGRFS_SP},
      {"ByrRG8ToBGRFS_SP", kRg, On::kCaller, ByrRG8ToBGRFS_SP},
      {"ByrBG8ToBGRFS_MP", kBg, On::kPool, ByrBG8ToBGRFS_MP},
      {"ByrGB8ToBGRFS_MP", kGb, On::kPool, ByrGB8ToBGRFS_MP},
      {"ByrGR8ToBGRFS_MP", kGr, On::kPool, ByrGR8ToBGRFS_MP},
      {"ByrRG8ToBGRFS_MP", kRg, On::kPool, ByrRG8ToBGRFS_MP},
  };
  return routines;
}

struct PackedPlanesRoutine {
  const char* name;
  reference::PackedFrame::Order order;
  On on;
  PlanesCall call;
};

inline const std::vector<PackedPlanesRoutine>& PackedPlanesRoutines() {
  using Order = reference::PackedFrame::Order;
  static const auto caller = [](uint32_t (*f)(void*, void*, void*, const void*, int32_t, int32_t, uint8_t)) {
    return [f](void* b, void* g, void* r, const void* s, uint32_t w, uint32_t h, uint8_t pad) {
      return f(b, g, r, s, static_cast<int32_t>(w), static_cast<int32_t>(h), pad);
    };
  };
  static const std::vector<PackedPlanesRoutine> routines = {
      {"RGB8PToBGRPlanar_SP", Order::kRgb, On::kCaller, caller(RGB8PToBGRPlanar_SP)},
      {"BGR8PToBGRPlanar_SP", Order::kBgr, On::kCaller, caller(BGR8PToBGRPlanar_SP)},
      {"RGB8PToBGRPlanar_MP", Order::kRgb, On::kPool, RGB8PToBGRPlanar_MP},
      {"BGR8PToBGRPlanar_MP", Order::kBgr, On::kPool, BGR8PToBGRPlanar_MP},
  };
  return routines;
}

}  // namespace prismo::test

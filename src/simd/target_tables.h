// Collects the tables of kernels that a unit compiled once per instruction set. For the HWY_ONCE part of a
// *_rows.cc, after highway.h: MAKER is a function of the unit's per-target namespace that returns a table.
#pragma once

#include "simd/targets.h"

#if defined(__aarch64__) && !defined(HWY_COMPILE_ONLY_SCALAR)
#define PRISMO_TARGET_TABLES(MAKER) \
  { nullptr, nullptr, nullptr, nullptr, nullptr, &HWY_STATIC_DISPATCH(MAKER) }
#else
#define PRISMO_TARGET_TABLES(MAKER)                                                                     \
  {                                                                                                     \
    HWY_CHOOSE_FALLBACK(MAKER), HWY_CHOOSE_SSE4(MAKER), HWY_CHOOSE_AVX2(MAKER), HWY_CHOOSE_AVX3(MAKER), \
        HWY_CHOOSE_AVX3_DL(MAKER), nullptr                                                              \
  }
#endif

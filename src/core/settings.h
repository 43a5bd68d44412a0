// The process-wide settings. Applications set them before conversions start; a conversion that runs while
// one changes sees either value.
#pragma once

#include <atomic>
#include <cstdint>

#include "core/status.h"

namespace prismo {

struct Settings {
  std::atomic<int32_t> processing_mode{1};  // 1: converters run on the pool
  std::atomic<int32_t> bayer_mode{0};       // 1: adaptive demosaic for 8-bit Bayer formats
  std::atomic<uint8_t> lut_ready{0};        // not 0: the lookup tables are built
};

inline constinit Settings settings;

inline int32_t ProcessingMode() { return settings.processing_mode.load(std::memory_order_relaxed); }
inline int32_t BayerMode() { return settings.bayer_mode.load(std::memory_order_relaxed); }

inline Status SetProcessingMode(int32_t mode) {
  settings.processing_mode.store(mode, std::memory_order_relaxed);
  return Status::kSuccess;
}
inline Status SetBayerMode(int32_t mode) {
  settings.bayer_mode.store(mode, std::memory_order_relaxed);
  return Status::kSuccess;
}

// Which values of the processing mode select the pool differs between entry points, by design.
inline bool PoolWhenModeIsOne() { return ProcessingMode() == 1; }
inline bool PoolWhenModeIsNotZero() { return ProcessingMode() != 0; }

}  // namespace prismo

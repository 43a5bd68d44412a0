#include "simd/targets.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>

namespace prismo::simd {
namespace {

constexpr const char* kNames[kTargetCount] = {"portable", "sse4", "avx2", "avx512", "avx512vbmi", "neon"};

bool Supports([[maybe_unused]] Target target) {
#if defined(HWY_COMPILE_ONLY_SCALAR)
  return target == Target::kPortable;
#elif defined(__x86_64__)
  switch (target) {
    case Target::kPortable:
      return true;
    case Target::kSse4:
      return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("aes") &&
             __builtin_cpu_supports("pclmul");
    case Target::kAvx2:
      return Supports(Target::kSse4) && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
             __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma");
    case Target::kAvx512:
      return Supports(Target::kAvx2) && __builtin_cpu_supports("avx512f") &&
             __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
             __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512vl");
    case Target::kAvx512Vbmi:
      return Supports(Target::kAvx512) && __builtin_cpu_supports("avx512vbmi") &&
             __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512vnni") &&
             __builtin_cpu_supports("avx512bitalg") && __builtin_cpu_supports("avx512vpopcntdq") &&
             __builtin_cpu_supports("vpclmulqdq") && __builtin_cpu_supports("gfni");
    case Target::kNeon:
      return false;
  }
  return false;
#elif defined(__aarch64__)
  return target == Target::kNeon;
#else
  return target == Target::kPortable;
#endif
}

struct Supported {
  std::array<Target, kTargetCount> targets;
  size_t count = 0;

  Supported() {
    for (size_t i = 0; i < kTargetCount; ++i) {
      if (Supports(static_cast<Target>(i))) targets[count++] = static_cast<Target>(i);
    }
  }
};

Target Best() {
  const std::span<const Target> supported = SupportedTargets();
  const char* limit = std::getenv("PRISMO_SIMD");
  const auto* limited = limit ? std::ranges::find(kNames, std::string_view(limit),
                                                  [](const char* name) { return std::string_view(name); })
                              : std::end(kNames);
  if (limited == std::end(kNames)) return supported.back();
  const auto allowed = static_cast<Target>(limited - std::begin(kNames));
  Target best = supported.front();
  for (Target target : supported) {
    if (target <= allowed) best = target;
  }
  return best;
}

constexpr uint8_t kUndecided = 0xFF;
constinit std::atomic<uint8_t> current_target{kUndecided};
constinit std::atomic<uint8_t> forced_crossing{kUndecided};

}  // namespace

const char* Name(Target target) { return kNames[static_cast<size_t>(target)]; }

std::span<const Target> SupportedTargets() {
  static const Supported supported;
  return {supported.targets.data(), supported.count};
}

Target CurrentTarget() {
  const uint8_t target = current_target.load(std::memory_order_relaxed);
  if (target != kUndecided) return static_cast<Target>(target);
  const Target best = Best();
  current_target.store(static_cast<uint8_t>(best), std::memory_order_relaxed);
  return best;
}

void SetTarget(Target target) {
  current_target.store(static_cast<uint8_t>(target), std::memory_order_relaxed);
}

bool CrossingLoadsAreSlow() {
  const uint8_t forced = forced_crossing.load(std::memory_order_relaxed);
  if (forced != kUndecided) return forced != 0;
#if defined(__x86_64__)
  static const bool slow = __builtin_cpu_is("amd") != 0;
  return slow;
#else
  return false;
#endif
}

void SetCrossingLoads(std::optional<bool> slow) {
  forced_crossing.store(slow ? static_cast<uint8_t>(*slow) : kUndecided, std::memory_order_relaxed);
}

}  // namespace prismo::simd

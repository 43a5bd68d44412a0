#include "simd/targets.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>

#include "hwy/cache_control.h"
#include "platform/cpu_caches.h"

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
constinit std::atomic<uint8_t> forced_store_kind{kUndecided};
constinit std::atomic<uint8_t> forced_places{kUndecided};
constinit std::atomic<uint8_t> forced_crossing{kUndecided};

void Force(std::atomic<uint8_t>& setting, std::optional<bool> value) {
  setting.store(value ? static_cast<uint8_t>(*value) : kUndecided, std::memory_order_relaxed);
}

// Beyond its share of the cache a streaming store beats a plain one, which first reads what it overwrites. A
// cache of a whole server socket is shared with strangers and its far slices are no faster than memory: an
// eighth of it is all that most conversions can count on (measured on a 105 MB cache, where streaming stores
// win from about 12 MB on). Of caches of up to 48 MB it is nearly all (measured on 32 MB: at 27 to 30 MB
// plain stores take 0.6 to 1.0 of the time, at 35 MB 0.8 to 1.2, as the neighbours are loud or quiet), and
// half where streaming stores have time (adaptive 0.6 to 0.8 of the time at 20 MB, with AVX2 bilinear 0.93 at
// 25 MB).
struct CacheForConversions {
  size_t bytes = platform::LastLevelCacheBytes();
  bool socket_wide = bytes > size_t{48} << 20;

  size_t Share(size_t reach, TimeGoesTo time) const {
    if (socket_wide) return bytes / 8 * reach;
    const bool quick =
        time == TimeGoesTo::kMemory || (time == TimeGoesTo::kBoth && CurrentTarget() == Target::kAvx512Vbmi);
    return quick ? bytes / 16 * 15 : bytes / 2;
  }
};

const CacheForConversions& Cache() {
  static const CacheForConversions cache;
  return cache;
}

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

StoreKind StoreKindFor(size_t working_set_bytes, size_t reach, TimeGoesTo time) {
  const uint8_t forced = forced_store_kind.load(std::memory_order_relaxed);
  if (forced != kUndecided) return static_cast<StoreKind>(forced);
  return working_set_bytes > Cache().Share(reach, time) ? StoreKind::kStreaming : StoreKind::kCached;
}

void FinishStores(StoreKind kind) {
  if (kind == StoreKind::kStreaming) hwy::FlushStream();
}

void SetStoreKind(std::optional<StoreKind> kind) {
  forced_store_kind.store(kind ? static_cast<uint8_t>(*kind) : kUndecided, std::memory_order_relaxed);
}

bool StreamsAtSeveralPlaces() {
  const uint8_t forced = forced_places.load(std::memory_order_relaxed);
  return forced != kUndecided ? forced != 0 : Cache().socket_wide;
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

void SetSeveralPlaces(std::optional<bool> several) { Force(forced_places, several); }
void SetCrossingLoads(std::optional<bool> slow) { Force(forced_crossing, slow); }

}  // namespace prismo::simd

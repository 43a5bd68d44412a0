#include "simd/stores.h"

#include <atomic>

#include "hwy/cache_control.h"
#include "platform/cpu_caches.h"
#include "simd/targets.h"

namespace prismo::simd {
namespace {

constexpr uint8_t kUndecided = 0xFF;
constinit std::atomic<uint8_t> forced_places{kUndecided};

// Parts in the low byte, pixels of a piece above.
constinit std::atomic<uint64_t> forced_plan{kUndecided};

std::optional<StorePlan> ForcedPlan() {
  const uint64_t plan = forced_plan.load(std::memory_order_relaxed);
  if (plan == kUndecided) return std::nullopt;
  return StorePlan::Streaming(plan & 0xFF, plan >> 8);
}

// Beyond its share of the cache a streaming store beats a plain one, which first reads what it overwrites. A
// cache of a whole server socket is shared with strangers and its far slices are no faster than memory: an
// eighth of it is all that most conversions can count on (measured on a 105 MB cache, where streaming stores
// win from about 12 MB on).
//
// Of caches of up to 48 MB it is half. Up to the whole cache as much of the target is streamed as half has no
// room for (measured on 32 MB at 20 to 30 MB: 0.7 to 1.07 of the time of plain stores alone, 0.65 to 1.06 of
// that of streaming; which of these is faster changes with what the neighbours do). Where streaming stores
// have time, all is streamed.
struct CacheForConversions {
  size_t bytes = platform::LastLevelCacheBytes();
  bool socket_wide = bytes > size_t{48} << 20;

  StorePlan PlanFor(const Traffic& traffic, size_t reach, TimeGoesTo time) const {
    const size_t room = socket_wide ? bytes / 8 * reach : bytes / 2;
    if (traffic.Bytes() <= room) return StoreKind::kCached;
    const bool waits =
        time == TimeGoesTo::kMemory || (time == TimeGoesTo::kBoth && CurrentTarget() == Target::kAvx512Vbmi);
    if (socket_wide || !waits || traffic.Bytes() > bytes) return StoreKind::kStreaming;
    const size_t beyond = traffic.Bytes() - room;
    return StorePlan::Streaming((beyond * StorePlan::kParts + traffic.written - 1) / traffic.written);
  }
};

const CacheForConversions& Cache() {
  static const CacheForConversions cache;
  return cache;
}

}  // namespace

StorePlan PlanStores(const Traffic& traffic, size_t reach, TimeGoesTo time) {
  if (const std::optional<StorePlan> forced = ForcedPlan()) return *forced;
  return Cache().PlanFor(traffic, reach, time);
}

StoreKind StoreKindFor(const Traffic& traffic) {
  return PlanStores(traffic, 1, TimeGoesTo::kArithmetic).OfPiece(0);
}

void FinishStores(StorePlan plan) {
  if (plan.StreamedParts() > 0) hwy::FlushStream();
}

void SetStores(std::optional<StorePlan> plan) {
  forced_plan.store(plan ? plan->StreamedParts() | uint64_t{plan->PiecePixels()} << 8 : kUndecided,
                    std::memory_order_relaxed);
}

bool StreamsAtSeveralPlaces() {
  const uint8_t forced = forced_places.load(std::memory_order_relaxed);
  return forced != kUndecided ? forced != 0 : Cache().socket_wide;
}

void SetSeveralPlaces(std::optional<bool> several) {
  forced_places.store(several ? static_cast<uint8_t>(*several) : kUndecided, std::memory_order_relaxed);
}

}  // namespace prismo::simd

// Runs a check on every instruction set, with both kinds of store and with what else depends on the
// processor. For programs that link the library's objects.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "simd/stores.h"
#include "simd/targets.h"

namespace prismo::test {

// Returns to the target and the choice of stores that were in force.
class ScopedTarget {
 public:
  ScopedTarget() : target_(simd::CurrentTarget()) {}
  ~ScopedTarget() {
    simd::SetTarget(target_);
    simd::SetStores(std::nullopt);
    simd::SetSeveralPlaces(std::nullopt);
    simd::SetCrossingLoads(std::nullopt);
  }
  ScopedTarget(const ScopedTarget&) = delete;
  ScopedTarget& operator=(const ScopedTarget&) = delete;

 private:
  simd::Target target_;
};

// What simd::CrossingLoadsAreSlow() may say that matters to a target: those with AVX-512 have kernels for
// both.
inline std::vector<bool> CrossingLoadsOf(simd::Target target) {
  const bool both = target == simd::Target::kAvx512 || target == simd::Target::kAvx512Vbmi;
  return both ? std::vector<bool>{true, false} : std::vector<bool>{true};
}

// Stops at the first target that fails.
template <class Check>
void ForEachTarget(Check&& check) {
  const ScopedTarget restore;
  simd::SetSeveralPlaces(true);  // what is left of a run goes in order, so that both are covered
  for (const simd::Target target : simd::SupportedTargets()) {
    simd::SetTarget(target);
    ASSERT_EQ(simd::CurrentTarget(), target);
    for (const simd::StoreKind stores : {simd::StoreKind::kCached, simd::StoreKind::kStreaming}) {
      simd::SetStores(stores);
      ASSERT_EQ(simd::PlanStores({0, 0}), simd::StorePlan(stores));
      for (const bool slow : CrossingLoadsOf(target)) {
        simd::SetCrossingLoads(slow);
        SCOPED_TRACE(testing::Message()
                     << simd::Name(target) << (stores == simd::StoreKind::kCached ? ", plain" : ", streaming")
                     << " stores" << (slow ? "" : ", loads that cross lines"));
        check();
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

}  // namespace prismo::test

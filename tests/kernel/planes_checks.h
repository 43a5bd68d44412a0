// What the tests of the conversions into planes share.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <vector>

#include "reference/bayer.h"
#include "reference/colour.h"
#include "reference/row_split.h"
#include "support/compare.h"
#include "support/generators.h"
#include "support/guarded_buffer.h"
#include "support/planes_routines.h"
#include "support/pool.h"
#include "support/routines.h"
#include "support/sweeps.h"
#include "support/targets.h"

namespace prismo::test {

using reference::Mosaic;
using reference::PackedFrame;
using reference::Phase;
using reference::Planes;

// One conversion into three planes at three places.
class PlanesCheck {
 public:
  PlanesCheck(std::vector<uint8_t> src, uint32_t width, uint32_t height, bool pad, Random& random)
      : src_(std::move(src)), pitch_(reference::PlanePitch(width, pad)) {
    for (std::vector<uint8_t>& plane : before_) plane = RandomBytes(pitch_ * height, random);
    expected_ = before_;
  }

  void Expect(const std::function<uint32_t(const Planes& planes, const void* src)>& reference) {
    status_ = reference({expected_[0].data(), expected_[1].data(), expected_[2].data()}, src_.data());
  }

  void Run(const std::function<uint32_t(void* b, void* g, void* r, const void* src)>& library) const {
    static size_t place = 0;
    const GuardedBuffer src(src_, Placement::Nth(place));
    // Only planes that are equally misaligned are streamed: those of each second target.
    const bool alike = place / 2 % 2 == 0;
    const size_t places[3] = {place * 3, alike ? place * 3 : place * 5 + 1,
                              alike ? place * 3 : place * 7 + 2};
    ++place;
    GuardedBuffer b(before_[0], Placement::Nth(places[0])), g(before_[1], Placement::Nth(places[1])),
        r(before_[2], Placement::Nth(places[2]));
    EXPECT_EQ(library(b.data(), g.data(), r.data(), src.data()), status_);
    const std::array<const GuardedBuffer*, 3> planes{&b, &g, &r};
    for (size_t i = 0; i < planes.size(); ++i) {
      SCOPED_TRACE(testing::Message() << "plane "
                                      << "BGR"[i]);
      EXPECT_TRUE(SameBytes(expected_[i], planes[i]->bytes(), {pitch_, 1}));
      EXPECT_TRUE(planes[i]->CanariesIntact());
    }
    EXPECT_TRUE(src.CanariesIntact());
  }

 private:
  std::vector<uint8_t> src_;
  size_t pitch_;
  std::array<std::vector<uint8_t>, 3> before_, expected_;
  uint32_t status_ = 0;
};

class PlanesTest : public PoolTest {
 protected:
  PlanesTest() : random_(Seed()) {}

  void CheckBayer(const BayerPlanesRoutine& routine, uint32_t width, uint32_t height, bool pad,
                  int32_t threads, Pattern pattern) {
    SCOPED_TRACE(testing::Message() << routine.name << ' ' << width << " x " << height << ", pad " << pad
                                    << ", " << NameOf(pattern) << ", " << threads << " threads");
    PlanesCheck check(MakeSamples(pattern, width, height, 8, random_), width, height, pad, random_);
    check.Expect([&](const Planes& planes, const void* src) {
      const Mosaic mosaic{src, width, height, routine.phase};
      if (routine.on == On::kPool) return reference::PooledBayerPlanes(mosaic, pad, planes, threads);
      reference::BayerPlanes(mosaic, pad, planes);
      return 0u;
    });
    ForEachTarget([&] {
      check.Run([&](void* b, void* g, void* r, const void* src) {
        return routine.call(b, g, r, src, width, height, pad ? 4 : 0);
      });
    });
  }

  void CheckPacked(const PackedPlanesRoutine& routine, uint32_t width, uint32_t height, bool pad,
                   int32_t threads) {
    SCOPED_TRACE(testing::Message() << routine.name << ' ' << width << " x " << height << ", pad " << pad
                                    << ", " << threads << " threads");
    PlanesCheck check(RandomBytes(size_t{3} * width * height, random_), width, height, pad, random_);
    check.Expect([&](const Planes& planes, const void* src) {
      const PackedFrame frame{src, width, false, 0, routine.order};
      if (routine.on == On::kPool) return reference::PooledSplit(frame, pad, planes, height, threads);
      reference::Split(frame, pad, planes, height);
      return 0u;
    });
    ForEachTarget([&] {
      check.Run([&](void* b, void* g, void* r, const void* src) {
        return routine.call(b, g, r, src, width, height, pad ? 4 : 0);
      });
    });
  }

  Random random_;
};

}  // namespace prismo::test

#include "support/rectangle_routines.h"

#include <gtest/gtest.h>

#include <vector>

#include "bayer/acpi_rows.h"
#include "support/conversion_check.h"
#include "support/generators.h"
#include "support/pool.h"
#include "support/sweeps.h"
#include "support/targets.h"

namespace prismo::test {
namespace {

using reference::Mosaic;
using reference::Output;
using reference::Phase;
using reference::Picture;
using reference::Rectangle;

// The phase of the frame in which a rectangle at (left, top) has a given phase of its own.
Phase FramePhase(Phase own, const Rectangle& r) { return reference::PhaseFrom(own, r.left, r.top); }

class RectangleTest : public PoolTest {
 protected:
  RectangleTest() : random_(Seed()) {}

  // Reference: uint32_t(const Mosaic&, const Rectangle&, Output, void* dst).
  template <class Reference>
  ConversionCheck CheckOf(Phase frame_phase, const RectangleArguments& a, Output output,
                          Reference&& reference) {
    const Rectangle& r = a.rectangle;
    ConversionCheck check(
        MakeSamples(kPatterns[checks_++ % std::size(kPatterns)], a.src_width, a.src_height, 8, random_), 1,
        Picture::Bytes(output, r.dst_width, r.dst_height), GridOf(output, r.dst_width), random_);
    check.Expect([&](void* dst, const void* src) {
      return reference(Mosaic{src, a.src_width, a.src_height, frame_phase}, r, output, dst);
    });
    return check;
  }

  static uint32_t Caller(const Mosaic& mosaic, const Rectangle& rectangle, Output output, void* dst) {
    reference::AdaptiveRectangle(mosaic, rectangle, output, dst);
    return 0;
  }

  static testing::Message Describe(const char* name, const RectangleArguments& a) {
    const Rectangle& r = a.rectangle;
    return testing::Message() << name << ": " << r.width << " x " << r.height << " at " << r.left << ", "
                              << r.top << " of " << a.src_width << " x " << a.src_height << " to "
                              << r.dst_left << ", " << r.dst_top << " of " << r.dst_width << " x "
                              << r.dst_height;
  }

  void CheckOnTargets(const RectangleRoutine& routine, const RectangleArguments& a, Output output) {
    SCOPED_TRACE(Describe(routine.name, a));
    const ConversionCheck check = CheckOf(FramePhase(routine.phase, a.rectangle), a, output, Caller);
    ForEachTarget([&] {
      check.Run(
          [&](void* dst, const void* src) { return routine.call(dst, src, a, output == Output::kPad, 0); });
    });
  }

  Random random_;
  size_t checks_ = 0;
};

// Several strips of columns, which begin and end anywhere.
TEST_F(RectangleTest, WideOnesEqualTheReference) {
  PRISMO_TRACE_SEED();
  uint32_t left = 2;
  for (const RectangleRoutine& routine : RectangleRoutines()) {
    for (const Output output : OutputsOf(routine.bgra)) {
      const uint32_t width = kStripColumns + 2 + 2 * (left % 37);
      CheckOnTargets(routine, {width + left + left % 2 + 2, 16, {left, 3, width, 8, width + 1, 9, 1, 1}},
                     output);
      if (HasFailure()) return;
      left += 5;
    }
  }
}

TEST_F(RectangleTest, EveryWidthEqualsTheReference) {
  PRISMO_TRACE_SEED();
  uint32_t i = 0;
  for (const RectangleRoutine& routine : RectangleRoutines()) {
    if (routine.on != On::kCaller) continue;
    for (const Output output : OutputsOf(routine.bgra)) {
      for (const uint32_t width : Widths(2)) {
        const uint32_t height = 2 + 2 * (i % 3), left = 2 + i % 5, top = 2 + i / 2 % 3;
        const uint32_t src_width = (left + width + 2 + 1) / 2 * 2, src_height = (top + height + 3) / 2 * 2;
        CheckOnTargets(
            routine,
            {src_width, src_height, {left, top, width, height, width + i % 4, height + 1, i % 4 != 0, i % 2}},
            output);
        if (HasFailure()) return;
        ++i;
      }
    }
  }
}

// All four parities of the place, at every edge of the range that is allowed.
TEST_F(RectangleTest, EveryPlaceEqualsTheReference) {
  PRISMO_TRACE_SEED();
  constexpr uint32_t kWidth = 22, kHeight = 16;
  for (const RectangleConverter& converter : RectangleConverters()) {
    const Output output = OutputsOf(converter.bgra).back();
    for (const uint32_t width : {2u, 8u, 14u}) {
      for (const uint32_t height : {4u, 6u, 10u}) {
        for (const uint32_t left : {2u, 3u, kWidth - 3 - width, kWidth - 2 - width}) {
          for (const uint32_t top : {2u, 3u, kHeight - 3 - height, kHeight - 2 - height}) {
            if (left < 2 || top < 2) continue;
            const RectangleArguments a{
                kWidth, kHeight, {left, top, width, height, width + 5, height + 3, 4, 2}};
            SCOPED_TRACE(Describe(converter.name, a));
            const ConversionCheck check = CheckOf(converter.phase, a, output, Caller);
            check.Run([&](void* dst, const void* src) { return converter.call(dst, src, a, 1, 0); });
            if (HasFailure()) return;
          }
        }
      }
    }
  }
}

TEST_F(RectangleTest, PlacesInTheDestinationUpToItsEdges) {
  PRISMO_TRACE_SEED();
  for (const RectangleRoutine& routine : RectangleRoutines()) {
    if (routine.on != On::kCaller) continue;
    for (const Output output : OutputsOf(routine.bgra)) {
      for (const uint32_t x : {0u, 1u, 7u}) {
        for (const uint32_t y : {0u, 3u}) {
          CheckOnTargets(routine, {20, 12, {5, 3, 10, 6, 17, 9, x, y}}, output);
        }
      }
    }
  }
}

TEST_F(RectangleTest, PoolEqualsTheCallerFormOfEveryPhase) {
  PRISMO_TRACE_SEED();
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads));
    for (const RectangleConverter& converter : RectangleConverters()) {
      for (const Output output : OutputsOf(converter.bgra)) {
        for (const uint32_t height : {2u + 2u * threads, 10u, 30u, 52u}) {
          for (const uint32_t left : {2u, 3u}) {
            for (const uint32_t top : {2u, 5u}) {
              const RectangleArguments a{40, 62, {left, top, 34 - height % 4, height, 41, 60, 3, 4}};
              SCOPED_TRACE(Describe(converter.name, a));
              const ConversionCheck check = CheckOf(
                  converter.phase, a, output,
                  [&](const Mosaic& mosaic, const Rectangle& rectangle, Output layout, void* dst) {
                    return reference::PooledAdaptiveRectangle(mosaic, rectangle, layout, dst, threads);
                  });
              check.Run([&](void* dst, const void* src) {
                return converter.call(dst, src, a, output == Output::kPad, 1);
              });
              if (HasFailure()) return;
            }
          }
        }
      }
    }
  }
}

// Too few rows for the threads: without an interior the pixels are right; with fewer rows than twice the
// threads only the greens are written.
TEST_F(RectangleTest, ShortRectanglesTimeOutOnThePool) {
  PRISMO_TRACE_SEED();
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads, kShortTimeout));
    for (const RectangleRoutine& routine : RectangleRoutines()) {
      if (routine.on != On::kPool) continue;
      for (uint32_t height = 2; height < static_cast<uint32_t>(2 + 2 * threads); height += 2) {
        const RectangleArguments a{24, 16, {5, 4, 12, height, 13, 11, 1, 3}};
        SCOPED_TRACE(Describe(routine.name, a));
        const Output output = OutputsOf(routine.bgra).back();
        const ConversionCheck check = CheckOf(
            FramePhase(routine.phase, a.rectangle), a, output,
            [&](const Mosaic& mosaic, const Rectangle& rectangle, Output layout, void* dst) {
              EXPECT_EQ(reference::PooledAdaptiveRectangle(mosaic, rectangle, layout, dst, threads), 18u);
              return 18u;
            });
        check.Run([&](void* dst, const void* src) { return routine.call(dst, src, a, 1, 0); });
      }
    }
  }
}

// The routines and the converters check the same; `call` gets a destination that holds 12 x 10 pixels.
class RectangleChecks : public RectangleTest {
 protected:
  using Call = std::function<uint32_t(void* dst, const void* src, const RectangleArguments& a)>;

  static std::vector<std::pair<std::string, Call>> All() {
    std::vector<std::pair<std::string, Call>> all;
    for (const RectangleRoutine& routine : RectangleRoutines()) {
      all.emplace_back(routine.name, [&routine](void* dst, const void* src, const RectangleArguments& a) {
        return routine.call(dst, src, a, 0, 0);
      });
    }
    for (const RectangleConverter& converter : RectangleConverters()) {
      for (const uint8_t pool : kOffOn) {
        all.emplace_back(converter.name,
                         [&converter, pool](void* dst, const void* src, const RectangleArguments& a) {
                           return converter.call(dst, src, a, 0, pool);
                         });
      }
    }
    return all;
  }
};

TEST_F(RectangleChecks, RefusedArguments) {
  const std::vector<uint8_t> src(20 * 16, 7);
  std::vector<uint8_t> dst(12 * 10 * 4, 9);
  const std::vector<uint8_t> before = dst;
  const RectangleArguments good{20, 16, {3, 2, 8, 8, 12, 10, 4, 2}};
  for (const auto& [name, call] : All()) {
    SCOPED_TRACE(name);
    const auto changed = [&](auto&& change) {
      RectangleArguments a = good;
      change(a);
      return call(dst.data(), src.data(), a);
    };
    EXPECT_EQ(call(nullptr, src.data(), good), 13u);
    EXPECT_EQ(call(dst.data(), nullptr, good), 13u);
    EXPECT_EQ(changed([](auto& a) { a.src_width = 19; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.src_height = 15; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.rectangle.width = 7; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.rectangle.height = 7; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.rectangle.left = 1; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.rectangle.top = 1; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.rectangle.left = 0; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.rectangle.left = 11; }), 13u);     // 11 + 8 > 20 - 2
    EXPECT_EQ(changed([](auto& a) { a.rectangle.top = 7; }), 13u);       // 7 + 8 > 16 - 2
    EXPECT_EQ(changed([](auto& a) { a.rectangle.dst_left = 5; }), 13u);  // 8 + 5 > 12
    EXPECT_EQ(changed([](auto& a) { a.rectangle.dst_top = 3; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.rectangle.dst_width = 11; }), 13u);
    EXPECT_EQ(changed([](auto& a) { a.rectangle.dst_height = 9; }), 13u);
    EXPECT_EQ(dst, before);
  }
  EXPECT_TRUE(IsMPMngrNULL());
}

TEST_F(RectangleChecks, TheLastPlaceInTheFrameIsAccepted) {
  const std::vector<uint8_t> src(20 * 16, 7);
  std::vector<uint8_t> dst(12 * 10 * 4, 9);
  ASSERT_TRUE(StartPool(1));
  for (const auto& [name, call] : All()) {
    EXPECT_EQ(call(dst.data(), src.data(), {20, 16, {10, 6, 8, 8, 12, 10, 4, 2}}), 0u) << name;
  }
}

// An empty frame passes the checks: 0 - 2 is a large number there.
TEST_F(RectangleChecks, AnEmptyFrameSucceeds) {
  const std::vector<uint8_t> src(64, 7);
  std::vector<uint8_t> dst(12 * 10 * 4, 9);
  const std::vector<uint8_t> before = dst;
  for (const auto& [name, call] : All()) {
    EXPECT_EQ(call(dst.data(), src.data(), {0, 16, {2, 2, 8, 8, 12, 10, 0, 0}}), 0u) << name;
    EXPECT_EQ(call(dst.data(), src.data(), {20, 0, {2, 2, 8, 8, 12, 10, 0, 0}}), 0u) << name;
    EXPECT_EQ(call(dst.data(), src.data(), {65536, 65536, {2, 2, 8, 8, 12, 10, 0, 0}}), 0u) << name;
  }
  EXPECT_EQ(dst, before);
  EXPECT_TRUE(IsMPMngrNULL());
}

TEST_F(RectangleTest, ConvertersTakeThePhaseFromTheCorner) {
  PRISMO_TRACE_SEED();
  const std::vector<uint8_t> src = MakeSamples(Pattern::kRandom, 20, 16, 8, random_);
  struct Case {
    uint32_t left, top;
    BgrRectangle routine;
  };
  for (const Case& c : {Case{2, 2, RectBG8ToBGR_SP_ACPI}, Case{3, 2, RectGB8ToBGR_SP_ACPI},
                        Case{2, 3, RectGR8ToBGR_SP_ACPI}, Case{3, 3, RectRG8ToBGR_SP_ACPI}}) {
    std::vector<uint8_t> expected(8 * 6 * 3), actual(8 * 6 * 3);
    EXPECT_EQ(c.routine(expected.data(), src.data(), 20, 16, c.left, c.top, 8, 6, 8, 6, 0, 0, 0), 0u);
    EXPECT_EQ(ConvBG8RectToBGR_ACPI(actual.data(), src.data(), 20, 16, c.left, c.top, 8, 6, 8, 6, 0, 0, 0, 0),
              0u);
    EXPECT_EQ(expected, actual) << c.left << ", " << c.top;
  }
}

class GenericRectangle : public RectangleTest {
 protected:
  static constexpr uint32_t kFormats[] = {PRISMO_BAYER_BG8, PRISMO_BAYER_GB8, PRISMO_BAYER_GR8,
                                          PRISMO_BAYER_RG8};
};

TEST_F(GenericRectangle, OutputKindsAndFormats) {
  PRISMO_TRACE_SEED();
  ASSERT_TRUE(StartPool(1));
  const RectangleArguments a{26, 20, {5, 4, 10, 10, 13, 12, 2, 1}};
  const Rectangle& r = a.rectangle;
  for (uint32_t i = 0; i < std::size(kFormats); ++i) {
    for (const uint32_t kind : {0u, 1u, 2u, 3u, 8u, 100u}) {
      const Output output = kind == 1 ? Output::kBgr : kind == 2 ? Output::kPad : Output::kBgra;
      const ConversionCheck check = CheckOf(reference::kPhases[i], a, output, Caller);
      for (const uint8_t pool : std::vector<uint8_t>{0, 1, 2}) {
        check.Run([&](void* dst, const void* src) {
          return ConvBayerRectEx_ACPI(kind, kFormats[i], dst, src, a.src_width, a.src_height, r.left, r.top,
                                      r.width, r.height, r.dst_width, r.dst_height, r.dst_left, r.dst_top,
                                      pool);
        });
      }
      check.Run([&](void* dst, const void* src) {
        return ConvBayerRect_ACPI(kind, kFormats[i], dst, src, a.src_width, a.src_height, r.left, r.top,
                                  r.width, r.height, r.dst_width, r.dst_height, r.dst_left, r.dst_top);
      });
    }
  }
}

TEST_F(GenericRectangle, OtherFormatsAreRefused) {
  const std::vector<uint8_t> src(20 * 16 * 2, 7);
  std::vector<uint8_t> dst(12 * 10 * 4, 9);
  const std::vector<uint8_t> before = dst;
  for (const uint32_t format : {PRISMO_BAYER_BG10, PRISMO_BAYER_GR12, PRISMO_MONO8, PRISMO_RGB8, 0u}) {
    EXPECT_EQ(ConvBayerRect_ACPI(0, format, dst.data(), src.data(), 20, 16, 2, 2, 8, 8, 12, 10, 0, 0), 13u);
    EXPECT_EQ(ConvBayerRectEx_ACPI(0, format, dst.data(), src.data(), 20, 16, 2, 2, 8, 8, 12, 10, 0, 0, 0),
              13u);
    EXPECT_EQ(ConvBayerRectEx_ACPI(0, format, dst.data(), src.data(), 0, 16, 2, 2, 8, 8, 12, 10, 0, 0, 0),
              13u);
  }
  EXPECT_EQ(dst, before);
}

// Tall enough for the most threads that a pool has.
TEST_F(GenericRectangle, EveryModeButZeroUsesThePool) {
  const std::vector<uint8_t> src(20 * 48, 7);
  std::vector<uint8_t> dst(8 * 40 * 4);
  const RectangleArguments a{20, 48, {2, 3, 8, 40, 8, 40, 0, 0}};
  for (const int32_t mode : {0, 1, 2, 7, -1}) {
    SetProcMode(mode);
    EXPECT_EQ(UsesPool([&] {
                EXPECT_EQ(ConvBayerRect_ACPI(0, PRISMO_BAYER_RG8, dst.data(), src.data(), 20, 48, 2, 3, 8, 40,
                                             8, 40, 0, 0),
                          0u);
              }),
              mode != 0);
    for (const uint8_t pool : kOffOn) {
      EXPECT_EQ(UsesPool([&] {
                  EXPECT_EQ(ConvBayerRectEx_ACPI(0, PRISMO_BAYER_RG8, dst.data(), src.data(), 20, 48, 2, 3, 8,
                                                 40, 8, 40, 0, 0, pool),
                            0u);
                }),
                pool != 0);
      for (const RectangleConverter& converter : RectangleConverters()) {
        EXPECT_EQ(UsesPool([&] { EXPECT_EQ(converter.call(dst.data(), src.data(), a, 0, pool), 0u); }),
                  pool != 0)
            << converter.name;
      }
    }
  }
}

}  // namespace
}  // namespace prismo::test

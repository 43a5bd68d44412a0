// What the tests of monochrome and of packed colour share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "reference/colour.h"
#include "reference/row_split.h"
#include "support/conversion_check.h"
#include "support/generators.h"
#include "support/pool.h"
#include "support/routines.h"
#include "support/sweeps.h"
#include "support/targets.h"

namespace prismo::test {

class PackedTest : public PoolTest {
 protected:
  using Order = reference::PackedFrame::Order;
  using Output = reference::Output;

  PackedTest() : random_(Seed()) {}

  struct Frame {
    uint32_t width, height;
    Pattern pattern = Pattern::kRandom;
    uint8_t shift = 0;
  };

  static uint32_t SamplesPerPixel(Order order) {
    return order == Order::kGrey ? 1 : order == Order::kBgra ? 4 : 3;
  }

  // Words use all 16 bits: most are beyond the depth of the format.
  ConversionCheck CheckOf(const PackedRoutine& routine, const Frame& frame, Output output, int32_t threads) {
    ConversionCheck check(MakeSamples(frame.pattern, frame.width * SamplesPerPixel(routine.source),
                                      frame.height, routine.words ? 16 : 8, random_),
                          routine.words ? 2 : 1, reference::Picture::Bytes(output, frame.width, frame.height),
                          GridOf(output, frame.width), random_);
    check.Expect([&](void* dst, const void* src) {
      const reference::PackedFrame packed{src, frame.width, routine.words, frame.shift, routine.source};
      if (routine.on == On::kPool && !CopiesOnTheCaller(routine, frame.width, output)) {
        return reference::PooledConvert(packed, output, dst, frame.height, threads);
      }
      reference::Convert(packed, output, dst, frame.height);
      return 0u;
    });
    return check;
  }

  // A BGR frame that needs no zero bytes is copied, not converted.
  static bool CopiesOnTheCaller(const PackedRoutine& routine, uint32_t width, Output output) {
    return routine.source == Order::kBgr && !routine.words && !routine.bgra &&
           (output == Output::kBgr || reference::PadBytes(3 * width) == 0);
  }

  static testing::Message Describe(const PackedRoutine& routine, const Frame& frame, Output output) {
    return testing::Message() << routine.name << ' ' << frame.width << " x " << frame.height << ", output "
                              << static_cast<int>(output) << ", " << NameOf(frame.pattern) << ", shift "
                              << int{frame.shift};
  }

  void CheckOnTargets(const PackedRoutine& routine, const Frame& frame, Output output) {
    SCOPED_TRACE(Describe(routine, frame, output));
    const ConversionCheck check = CheckOf(routine, frame, output, 1);
    ForEachTarget([&] { Run(check, routine, frame, output); });
  }

  static void Run(const ConversionCheck& check, const PackedRoutine& routine, const Frame& frame,
                  Output output) {
    check.Run([&](void* dst, const void* src) {
      return routine.call(dst, src, frame.width, frame.height, frame.shift,
                          output == Output::kPad ? 0x40 : 0);
    });
  }

  // On a pool of one thread an even height is converted whole, from two rows on.
  void SweepWidths(const std::vector<PackedRoutine>& routines) {
    PRISMO_TRACE_SEED();
    ASSERT_TRUE(StartPool(1));
    uint32_t i = 0;
    for (const PackedRoutine& routine : routines) {
      for (const Output output : OutputsOf(routine.bgra)) {
        for (const uint32_t width : Widths()) {
          const uint32_t height = routine.on == On::kPool ? 2 : 1 + i % 3;
          const uint8_t shift = routine.words ? std::vector<uint8_t>{2, 4, 8, 0}[i % 4] : uint8_t{0};
          CheckOnTargets(routine, {width, height, kPatterns[i % std::size(kPatterns)], shift}, output);
          if (HasFailure()) return;
          ++i;
        }
      }
    }
  }

  // Pictures that are streamed at several places by turns: the conversions whose rows lie side by side are
  // one run.
  void SweepLongRuns(const std::vector<PackedRoutine>& routines) {
    PRISMO_TRACE_SEED();
    for (const PackedRoutine& routine : routines) {
      if (routine.on == On::kPool) continue;
      for (const Output output : OutputsOf(routine.bgra)) {
        CheckOnTargets(routine, {523, 257, Pattern::kRandom, static_cast<uint8_t>(routine.words ? 4 : 0)},
                       output);
        CheckOnTargets(routine, {5122, 3, Pattern::kRandom, static_cast<uint8_t>(routine.words ? 2 : 0)},
                       output);
        if (HasFailure()) return;
      }
    }
  }

  void SweepShifts(const std::vector<PackedRoutine>& routines) {
    PRISMO_TRACE_SEED();
    ASSERT_TRUE(StartPool(1));
    for (const PackedRoutine& routine : routines) {
      if (!routine.words) continue;
      for (uint32_t shift = 0; shift <= 40; ++shift) {
        CheckOnTargets(routine, {43, 2, Pattern::kRandom, static_cast<uint8_t>(shift)},
                       OutputsOf(routine.bgra).back());
        if (HasFailure()) return;
      }
      for (const uint8_t shift : std::vector<uint8_t>{64, 100, 255}) {
        CheckOnTargets(routine, {43, 2, Pattern::kRandom, shift}, OutputsOf(routine.bgra).back());
      }
    }
  }

  // Heights that finish, of every division, with the last row of an odd height as it is left.
  void SweepHeights(const std::vector<PackedRoutine>& routines) {
    PRISMO_TRACE_SEED();
    bool left_out = false;
    for (const int32_t threads : ThreadCounts()) {
      ASSERT_TRUE(StartPool(threads));
      for (const PackedRoutine& routine : routines) {
        if (routine.on != On::kPool) continue;
        for (const Output output : OutputsOf(routine.bgra)) {
          for (uint32_t height = 2; height <= 70; height += height < 12 ? 1 : 5) {
            const reference::RowSplit split =
                reference::SplitRows(0, static_cast<int32_t>(height) - 1, threads, 2);
            if (!split.finishes) continue;
            left_out |= split.Covered().count + 1 == static_cast<int32_t>(height);
            const Frame frame{7 + height % 4, height, Pattern::kRandom, uint8_t{4}};
            SCOPED_TRACE(Describe(routine, frame, output) << ", " << threads << " threads");
            Run(CheckOf(routine, frame, output, threads), routine, frame, output);
            if (HasFailure()) return;
          }
        }
      }
    }
    EXPECT_TRUE(left_out);
  }

  void CheckShortFrames(const std::vector<PackedRoutine>& routines) {
    PRISMO_TRACE_SEED();
    for (const int32_t threads : ThreadCounts()) {
      ASSERT_TRUE(StartPool(threads, kShortTimeout));
      for (const PackedRoutine& routine : routines) {
        if (routine.on != On::kPool || routine.words == routine.bgra) continue;
        for (uint32_t height = 1; height < 2 * static_cast<uint32_t>(threads); ++height) {
          const Frame frame{7, height, Pattern::kRandom, 0};
          const Output output = OutputsOf(routine.bgra).back();
          SCOPED_TRACE(Describe(routine, frame, output));
          Run(CheckOf(routine, frame, output, threads), routine, frame, output);
        }
      }
    }
  }

  void ExpectRefusals(const std::vector<PackedRoutine>& routines) {
    std::vector<uint8_t> src(64, 3), dst(128, 9);
    const std::vector<uint8_t> before = dst;
    for (const PackedRoutine& routine : routines) {
      SCOPED_TRACE(routine.name);
      for (const uint8_t pad : kOffOn) {
        const auto status = [&](void* d, const void* s, uint32_t width, uint32_t height) {
          return routine.call(d, s, width, height, 0, pad);
        };
        EXPECT_EQ(status(nullptr, src.data(), 4, 4), 13u);
        EXPECT_EQ(status(dst.data(), nullptr, 4, 4), 13u);
        EXPECT_EQ(status(nullptr, src.data(), 0, 4), 13u);
        EXPECT_EQ(status(dst.data(), src.data(), 0, 4), 0u);
        EXPECT_EQ(status(dst.data(), src.data(), 5, 0), 0u);
        EXPECT_EQ(status(dst.data(), src.data(), 65536, 65536), 0u);
        EXPECT_EQ(status(dst.data(), src.data(), 0x40000000u, 4), 0u);
      }
    }
    EXPECT_TRUE(IsMPMngrNULL());
    EXPECT_EQ(dst, before);
  }

  Random random_;
};

}  // namespace prismo::test

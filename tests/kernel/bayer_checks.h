// What the tests of the two whole-frame demosaics share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "reference/bayer.h"
#include "support/conversion_check.h"
#include "support/generators.h"
#include "support/pool.h"
#include "support/routines.h"
#include "support/sweeps.h"
#include "support/targets.h"

namespace prismo::test {

struct BayerFrame {
  uint32_t width, height;
  Pattern pattern = Pattern::kRandom;
  uint32_t bits = 8;  // of the samples' values
  uint8_t shift = 0;
};

// The arguments, for traces.
inline testing::Message Describe(const BayerRoutine& routine, const BayerFrame& frame,
                                 reference::Output output) {
  return testing::Message() << routine.name << ' ' << frame.width << " x " << frame.height << ", output "
                            << static_cast<int>(output) << ", " << NameOf(frame.pattern) << " samples of "
                            << frame.bits << " bits, shift " << int{frame.shift};
}

// Reference: uint32_t(const Mosaic&, Output, void* dst), which returns the status.
template <class Reference>
ConversionCheck CheckOf(const BayerRoutine& routine, const BayerFrame& frame, reference::Output output,
                        Random& random, Reference&& reference) {
  const size_t sample_bytes = routine.words ? 2 : 1;
  std::vector<uint8_t> samples = MakeSamples(frame.pattern, frame.width, frame.height, frame.bits, random);
  if (routine.words && frame.bits <= 8) throw std::invalid_argument("words need more than 8 bits");
  ConversionCheck check(std::move(samples), sample_bytes,
                        reference::Picture::Bytes(output, frame.width, frame.height),
                        GridOf(output, frame.width), random);
  check.Expect([&](void* dst, const void* src) {
    return reference(
        reference::Mosaic{src, frame.width, frame.height, routine.source, routine.words, frame.shift}, output,
        dst);
  });
  return check;
}

// The same, run on every target.
template <class Reference>
void CheckOnTargets(const BayerRoutine& routine, const BayerFrame& frame, reference::Output output,
                    Random& random, Reference&& reference) {
  SCOPED_TRACE(Describe(routine, frame, output));
  const ConversionCheck check = CheckOf(routine, frame, output, random, reference);
  const uint8_t pad = output == reference::Output::kPad;
  ForEachTarget([&] {
    check.Run([&](void* dst, const void* src) {
      return routine.call(dst, src, frame.width, frame.height, frame.shift, pad);
    });
  });
}

// What every whole-frame demosaic answers before it looks at a sample, in this order.
inline void ExpectRefusals(const BayerRoutine& routine) {
  SCOPED_TRACE(routine.name);
  std::vector<uint8_t> src(64, 3), dst(128, 9);
  const std::vector<uint8_t> before = dst;
  const auto status = [&](void* d, const void* s, uint32_t width, uint32_t height) {
    return routine.call(d, s, width, height, 0, 1);
  };
  EXPECT_EQ(status(nullptr, src.data(), 4, 4), 13u);
  EXPECT_EQ(status(dst.data(), nullptr, 4, 4), 13u);
  EXPECT_EQ(status(nullptr, src.data(), 0, 4), 13u);
  EXPECT_EQ(status(dst.data(), src.data(), 0, 4), 0u);
  EXPECT_EQ(status(dst.data(), src.data(), 4, 0), 0u);
  EXPECT_EQ(status(dst.data(), src.data(), 3, 0), 0u);
  EXPECT_EQ(status(dst.data(), src.data(), 65536, 65536), 0u);
  EXPECT_EQ(status(dst.data(), src.data(), 0x80000000u, 2), 0u);
  EXPECT_EQ(status(dst.data(), src.data(), 3, 4), 13u);
  EXPECT_EQ(status(dst.data(), src.data(), 4, 3), 13u);
  EXPECT_EQ(status(dst.data(), src.data(), 1, 1), 13u);
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_EQ(dst, before);
}

}  // namespace prismo::test

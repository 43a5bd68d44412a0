#include "support/conversion_check.h"

#include "support/guarded_buffer.h"

namespace prismo::test {
namespace {

size_t next_place = 0;

}  // namespace

ConversionCheck::ConversionCheck(std::vector<uint8_t> src, size_t sample_bytes, size_t dst_bytes,
                                 PixelGrid grid, Random& random)
    : src_(std::move(src)),
      sample_bytes_(sample_bytes),
      before_(RandomBytes(dst_bytes, random)),
      expected_(before_),
      grid_(grid) {}

void ConversionCheck::Expect(const Call& reference) {
  expected_ = before_;
  status_ = reference(expected_.data(), src_.data());
}

void ConversionCheck::Run(const Call& library) const {
  const size_t place = next_place++;
  const GuardedBuffer src(src_, Placement::Nth(place, sample_bytes_));
  GuardedBuffer dst(before_, Placement::Nth(place * 5 + place / 8));

  EXPECT_EQ(library(dst.data(), src.data()), status_);
  EXPECT_TRUE(SameBytes(expected_, dst.bytes(), grid_));
  EXPECT_TRUE(SameBytes(src_, src.bytes())) << "in the source";
  EXPECT_TRUE(dst.CanariesIntact()) << "around the destination";
  EXPECT_TRUE(src.CanariesIntact()) << "around the source";
}

}  // namespace prismo::test

// What becomes of the greens of a first work when it, or the second one, is given up: a worker may come
// before its submitter or after it.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "bayer/acpi_job.h"

namespace prismo {
namespace {

constexpr uint32_t kWidth = 40, kHeight = 12;
constexpr uint8_t kBefore = 7;
constexpr RowRange kMiddle{2, kHeight - 4};

class GreenJobTest : public testing::TestWithParam<Layout> {
 protected:
  GreenJobTest() {
    for (size_t i = 0; i < frame_.size(); ++i) frame_[i] = static_cast<uint8_t>(i * i * 31 + i / 7);
    AcpiOnCaller({Phase::kGR, GetParam()}, complete_.data(), frame_.data(), {kWidth, kHeight});
    green_.ComputeRows({1, 1});
    green_.ComputeRows({kHeight - 2, 1});
  }

  enum class Row { kUntouched, kGreens, kComplete };

  void Expect(RowRange rows, Row state) const {
    for (int32_t y = rows.first; y < rows.first + rows.count; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        const bool border = x < 2 || x >= kWidth - 2;
        for (size_t channel = 0; channel < pixel_bytes_; ++channel) {
          const size_t at = static_cast<size_t>(y) * pitch_ + x * pixel_bytes_ + channel;
          const bool written = state == Row::kComplete || (state == Row::kGreens && (border || channel == 1));
          ASSERT_EQ(picture_[at], written ? complete_[at] : kBefore) << x << ',' << y << ": " << channel;
        }
      }
    }
  }

  const size_t pixel_bytes_ = PixelBytes(GetParam());
  const size_t pitch_ = RowBytes(GetParam(), kWidth);
  std::vector<uint8_t> frame_ = std::vector<uint8_t>(kWidth * kHeight);
  std::vector<uint8_t> complete_ = std::vector<uint8_t>(pitch_ * kHeight);
  std::vector<uint8_t> picture_ = std::vector<uint8_t>(pitch_ * kHeight, kBefore);
  GreenPlane plane_{{0, kWidth}, 1, kHeight - 2};
  std::vector<uint8_t> memory_ = std::vector<uint8_t>(plane_.Bytes());
  const AcpiImages images_{.src = frame_.data(),
                           .frame = {kWidth, kHeight},
                           .phase = Phase::kGR,
                           .dst = picture_.data(),
                           .dst_pitch = pitch_,
                           .first_column = 0,
                           .first_row = 0,
                           .layout = GetParam()};
  const GreenJob green_ = [this] {
    plane_.Use(memory_.data());
    return GreenJob{images_, {0, kWidth}, plane_};
  }();
  const AcpiJob colours_{.images = images_,
                         .region = {{0, kWidth}, {2, kWidth - 2}, 2, kHeight - 3},
                         .pad_bytes = 0,
                         .stores = simd::StoreKind::kCached,
                         .greens = plane_};
};

INSTANTIATE_TEST_SUITE_P(Layouts, GreenJobTest, testing::Values(Layout::kBgra, Layout::kBgr));

TEST_P(GreenJobTest, LeavesThePictureToTheSecondWork) {
  green_.Rows(kMiddle);
  Expect({0, kHeight}, Row::kUntouched);
  colours_.Rows(kMiddle);
  Expect({0, 2}, Row::kUntouched);
  Expect(kMiddle, Row::kComplete);
  Expect({kHeight - 2, 2}, Row::kUntouched);
}

TEST_P(GreenJobTest, RowsThatAreThereWhenItIsGivenUpComeFromTheSubmitter) {
  green_.Rows({4, 2});
  green_.GiveUp(kMiddle);
  Expect({0, 4}, Row::kUntouched);
  Expect({4, 2}, Row::kGreens);
  Expect({6, kHeight - 6}, Row::kUntouched);
}

TEST_P(GreenJobTest, RowsThatComeLateComeFromTheirWorker) {
  green_.GiveUp(kMiddle);
  Expect({0, kHeight}, Row::kUntouched);
  green_.Rows({6, 4});
  Expect({0, 6}, Row::kUntouched);
  Expect({6, 4}, Row::kGreens);
  Expect({10, kHeight - 10}, Row::kUntouched);
}

TEST_P(GreenJobTest, RowsWithoutColoursKeepTheirGreens) {
  green_.Rows(kMiddle);
  colours_.Rows({4, 4});
  green_.GiveUp(kMiddle);
  Expect({2, 2}, Row::kGreens);
  Expect({4, 4}, Row::kComplete);
  Expect({8, 2}, Row::kGreens);
}

TEST_P(GreenJobTest, ColoursThatComeLateAreLeftOut) {
  green_.Rows(kMiddle);
  green_.GiveUp({6, kHeight - 8});
  colours_.Rows({4, 4});
  Expect({4, 2}, Row::kComplete);
  Expect({6, kHeight - 8}, Row::kGreens);
}

}  // namespace
}  // namespace prismo

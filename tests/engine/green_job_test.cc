// What becomes of the greens of a first work when it, or the second one, is given up: a worker may come
// before its submitter or after it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <latch>
#include <optional>
#include <thread>
#include <vector>

#include "PrismoUtl.h"
#include "bayer/acpi_job.h"
#include "mp/work.h"
#include "support/pool.h"

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
  std::vector<uint8_t> states_ = std::vector<uint8_t>(kHeight);
  const GreenRows rows_{0, states_.data()};
  const AcpiImages images_{.src = frame_.data(),
                           .frame = {kWidth, kHeight},
                           .phase = Phase::kGR,
                           .dst = picture_.data(),
                           .dst_pitch = pitch_,
                           .first_column = 0,
                           .first_row = 0,
                           .layout = GetParam()};
  const GreenJob green_{images_, {0, kWidth}, rows_};
  const AcpiJob colours_{.images = images_,
                         .region = {{0, kWidth}, {2, kWidth - 2}, 2, kHeight - 3},
                         .pad_bytes = 0,
                         .stores = simd::StoreKind::kCached,
                         .greens = rows_};
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

// Whoever comes first, each row ends up with what it is due.
TEST_P(GreenJobTest, WorkersAndTheSubmitterMayComeAtOnce) {
  for (int round = 0; round < 200; ++round) {
    std::fill(states_.begin(), states_.end(), uint8_t{0});
    std::fill(picture_.begin(), picture_.end(), kBefore);
    std::atomic<int> arrived{0};
    const auto meet = [&arrived](int time) {
      ++arrived;
      while (arrived < 2 * time) std::this_thread::yield();
    };
    std::thread worker([&] {
      meet(1);
      green_.Rows(kMiddle);
      meet(2);
      colours_.Rows(kMiddle);
    });
    meet(1);
    const bool at_first = round % 2 == 0;
    if (at_first) green_.GiveUp(kMiddle);
    meet(2);
    if (!at_first) green_.GiveUp(kMiddle);
    worker.join();
    for (int32_t y = kMiddle.first; y < kMiddle.first + kMiddle.count; ++y) {
      const size_t blue_of_column_2 = static_cast<size_t>(y) * pitch_ + 2 * pixel_bytes_;
      const bool complete = picture_[blue_of_column_2] != kBefore;
      Expect({y, 1}, complete ? Row::kComplete : Row::kGreens);
      if (HasFatalFailure()) return;
    }
  }
}

// Wide rows come in strips.
TEST(WideGreenJob, PutsGreensOfAllColumns) {
  constexpr uint32_t kWide = 4400;
  constexpr RowRange kRows{2, kHeight - 4};
  std::vector<uint8_t> frame(kWide * kHeight), states(kHeight);
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 31 + i / 7);
  std::vector<uint8_t> complete(3 * frame.size()), picture(3 * frame.size(), kBefore);
  AcpiOnCaller({Phase::kBG, Layout::kBgr}, complete.data(), frame.data(), {kWide, kHeight});
  const GreenRows rows(0, states.data());
  const GreenJob green{{.src = frame.data(),
                        .frame = {kWide, kHeight},
                        .phase = Phase::kBG,
                        .dst = picture.data(),
                        .dst_pitch = 3 * kWide,
                        .first_column = 0,
                        .first_row = 0,
                        .layout = Layout::kBgr},
                       {0, kWide},
                       rows};
  green.Rows(kRows);
  green.GiveUp(kRows);
  for (size_t at = 0; at < picture.size(); ++at) {
    const size_t x = at / 3 % kWide, y = at / 3 / kWide;
    const bool border = x < 2 || x >= kWide - 2;
    const bool written = y >= 2 && y < kHeight - 2 && (border || at % 3 == 1);
    ASSERT_EQ(picture[at], written ? complete[at] : kBefore) << x << ',' << y;
  }
}

// The second work waits behind another until its time is up.
class SecondWorkGivenUp : public test::PoolTest {
 protected:
  using Call = std::function<uint32_t(uint8_t* picture)>;

  static void Wait(MPWork* work) {
    int32_t first_row = 0, rows = 0;
    while (MPWorkTakeBlock(work, first_row == 0, &first_row, &rows)) {
      reinterpret_cast<std::latch*>(work->Dst)->wait();
      first_row = 1;
    }
  }

  // A work that lasts until the latch is open.
  static uint32_t Occupy(std::latch& until) {
    return ExecWork2(&Wait, 0, 0, nullptr, 1, 1, 1, 1, &until, 0, 1, 0);
  }

  // True when so many works exist, a moment after the last of them was made: it is waited for by then.
  static bool Exist(int32_t works, std::chrono::milliseconds moment) {
    for (int i = 0; i < 10'000 && mp::Work::Live() != works; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::this_thread::sleep_for(moment);
    return mp::Work::Live() == works;
  }

  // The picture after a call whose first work was done and whose second one never began. That shows in a byte
  // of green; in none without a byte to look at.
  static std::vector<uint8_t> Picture(size_t bytes, std::optional<size_t> green, const Call& call) {
    uint32_t before_status = 0, status = 0, between_status = 0;
    for (int moment_ms = 5; moment_ms < 1000; moment_ms *= 2) {
      const std::chrono::milliseconds moment(moment_ms);
      EXPECT_TRUE(test::StartPool(1, static_cast<uint32_t>(1000 + 20 * moment_ms)));
      std::vector<uint8_t> picture(bytes, kBefore);
      std::latch first(1), second(1);
      std::thread before([&] { before_status = Occupy(first); });
      bool in_order = Exist(1, moment);
      std::thread caller([&] { status = call(picture.data()); });
      in_order = Exist(2, moment) && in_order;
      std::thread between([&] { between_status = Occupy(second); });
      in_order = Exist(3, moment) && in_order;
      SetMPTimeout_msec(static_cast<uint32_t>(20 + moment_ms));  // of the second work alone
      first.count_down();
      before.join();
      caller.join();
      second.count_down();
      between.join();
      TerminateMPThreads();
      const bool as_wanted = in_order && before_status == UTL_STS_SUCCESS && status == UTL_STS_TIMEOUT &&
                             between_status == UTL_STS_SUCCESS;
      if (as_wanted && (!green || picture[*green] != kBefore)) return picture;
    }
    ADD_FAILURE() << "the works never came in the wanted order; at last " << before_status << ", " << status
                  << " and " << between_status;
    return std::vector<uint8_t>(bytes, kBefore);
  }
};

TEST_F(SecondWorkGivenUp, LeavesGreensAndBordersOfAFrame) {
  constexpr uint32_t kFrameWidth = 150, kFrameHeight = 20;
  std::vector<uint8_t> frame(kFrameWidth * kFrameHeight);
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 31 + i / 7);
  const size_t pitch = RowBytes(Layout::kBgrPad, kFrameWidth);
  std::vector<uint8_t> complete(pitch * kFrameHeight);
  ASSERT_EQ(ByrGR8ToBGR_SP_ACPI(complete.data(), frame.data(), kFrameWidth, kFrameHeight, 1), 0u);
  const size_t green = 7 * pitch + 3 * 7 + 1;
  ASSERT_NE(complete[green], kBefore);
  const std::vector<uint8_t> picture = Picture(complete.size(), green, [&](uint8_t* dst) {
    return ByrGR8ToBGR_MP_ACPI(dst, frame.data(), kFrameWidth, kFrameHeight, 1);
  });
  for (size_t at = 0; at < picture.size(); ++at) {
    const size_t x = at % pitch / 3, y = at / pitch;
    const bool inside = x >= 2 && x < kFrameWidth - 2 && y >= 2 && y < kFrameHeight - 2;
    ASSERT_EQ(picture[at], inside && at % pitch % 3 != 1 ? kBefore : complete[at]) << x << ',' << y;
  }
}

TEST_F(SecondWorkGivenUp, LeavesGreensAndTheRingOfARectangle) {
  constexpr uint32_t kFrameWidth = 150, kFrameHeight = 20, kRows = 14;
  std::vector<uint8_t> frame(kFrameWidth * kFrameHeight);
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 31 + i / 7);
  for (const uint32_t columns : {66u, 0u}) {
    for (const uint32_t left : {2u, 37u}) {
      SCOPED_TRACE(testing::Message() << columns << " columns from " << left << " on");
      constexpr uint32_t kPictureWidth = 80, kPictureHeight = 20, kLeft = 5, kTop = 3;
      constexpr size_t kPitch = 4 * kPictureWidth;
      std::vector<uint8_t> complete(kPitch * kPictureHeight, kBefore);
      const auto call = [&](auto routine, uint8_t* dst) {
        return routine(dst, frame.data(), kFrameWidth, kFrameHeight, left, 3, columns, kRows, kPictureWidth,
                       kPictureHeight, kLeft, kTop);
      };
      ASSERT_EQ(call(RectGB8ToBGRA_SP_ACPI, complete.data()), 0u);
      std::optional<size_t> green;
      if (columns > 0) {
        green = (kTop + 4) * kPitch + 4 * (kLeft + 4) + 1;
        ASSERT_NE(complete[*green], kBefore);
      }
      const std::vector<uint8_t> picture =
          Picture(complete.size(), green, [&](uint8_t* dst) { return call(RectGB8ToBGRA_MP_ACPI, dst); });
      for (size_t at = 0; at < picture.size(); ++at) {
        const size_t x = at % kPitch / 4, y = at / kPitch;
        const bool inside = x > kLeft && x + 1 < kLeft + columns && y > kTop && y + 1 < kTop + kRows;
        ASSERT_EQ(picture[at], inside && at % 4 != 1 ? kBefore : complete[at]) << x << ',' << y;
      }
    }
  }
}

}  // namespace
}  // namespace prismo

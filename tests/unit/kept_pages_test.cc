#include "platform/kept_pages.h"

#include <gtest/gtest.h>

#include <cstring>

namespace prismo::platform {
namespace {

class KeptPages : public testing::Test {
 protected:
  void TearDown() override { ReleaseKeptPages(); }
};

TEST_F(KeptPages, ComeBackToTheNextTaker) {
  const void* const first = TakePages(100'000).get();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(TakePages(100'000).get(), first);
  EXPECT_EQ(TakePages(500).get(), first) << "for fewer bytes, too";
}

TEST_F(KeptPages, AreThereInFull) {
  for (const size_t bytes : {100'000, 1, 3'000'000, 5000}) {
    const std::shared_ptr<void> pages = TakePages(bytes);
    ASSERT_NE(pages, nullptr);
    std::memset(pages.get(), 1, bytes);
  }
}

TEST_F(KeptPages, GrowWithWhatIsTaken) {
  TakePages(4096);
  const std::shared_ptr<void> large = TakePages(1 << 20);
  std::memset(large.get(), 1, 1 << 20);
}

TEST_F(KeptPages, OfTwoTakersAtOnceAreDifferent) {
  const std::shared_ptr<void> first = TakePages(4096);
  const std::shared_ptr<void> second = TakePages(4096);
  EXPECT_NE(first, second);
}

TEST_F(KeptPages, ThatCannotBeHadAreNull) { EXPECT_EQ(TakePages(SIZE_MAX - 5), nullptr); }

}  // namespace
}  // namespace prismo::platform

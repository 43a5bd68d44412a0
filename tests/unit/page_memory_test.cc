// Pages come zeroed and writable, whole or not at all.
#include "platform/page_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/emulation.h"

namespace prismo::platform {
namespace {

TEST(PageMemory, IsZeroWritableAndOnAPage) {
  for (size_t bytes : {size_t{1}, size_t{64}, size_t{4095}, size_t{4096}, size_t{4097}, size_t{640'000},
                       size_t{20'000'001}}) {
    auto* pages = static_cast<uint8_t*>(AllocatePages(bytes));
    ASSERT_NE(pages, nullptr) << bytes;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(pages) % 4096, 0u);
    EXPECT_TRUE(std::all_of(pages, pages + bytes, [](uint8_t byte) { return byte == 0; }));
    std::fill(pages, pages + bytes, uint8_t{0xA5});
    EXPECT_TRUE(std::all_of(pages, pages + bytes, [](uint8_t byte) { return byte == 0xA5; }));
    FreePages(pages);
  }
}

TEST(PageMemory, BlocksAreApart) {
  std::vector<uint8_t*> blocks;
  for (uint8_t i = 0; i < 50; ++i) {
    blocks.push_back(static_cast<uint8_t*>(AllocatePages(10000)));
    ASSERT_NE(blocks.back(), nullptr);
    std::fill(blocks.back(), blocks.back() + 10000, i);
  }
  for (uint8_t i = 0; i < 50; ++i) {
    EXPECT_TRUE(std::all_of(blocks[i], blocks[i] + 10000, [i](uint8_t byte) { return byte == i; }));
    FreePages(blocks[i]);
  }
}

// Address space would run out long before the loop does, were the pages not given back.
TEST(PageMemory, IsGivenBack) {
  if (test::kUnderQemu) GTEST_SKIP() << "QEMU remembers every page, and takes memory for that";
  for (int i = 0; i < 10000; ++i) {
    void* pages = AllocatePages(size_t{1} << 34);
    if (!pages) GTEST_SKIP() << "the system does not promise 16 GiB";
    FreePages(pages);
  }
}

TEST(PageMemory, NothingAndTooMuchAreNull) {
  EXPECT_EQ(AllocatePages(0), nullptr);
  EXPECT_EQ(AllocatePages(SIZE_MAX), nullptr);
  EXPECT_EQ(AllocatePages(SIZE_MAX - 4095), nullptr);
  EXPECT_EQ(AllocatePages(SIZE_MAX / 2), nullptr);
  EXPECT_EQ(AllocatePages(size_t{1} << 62), nullptr);
  FreePages(nullptr);
}

}  // namespace
}  // namespace prismo::platform

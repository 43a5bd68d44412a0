// Sizes of the processor's caches.
#include "platform/cpu_caches.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace prismo::platform {
namespace {

TEST(CpuCaches, TheLastLevelIsTheFarthestThatThereIs) {
  size_t farthest = 0;
  for (const int level : {2, 3, 4}) {
    if (const size_t bytes = CacheBytes(level)) farthest = bytes;
  }
  EXPECT_EQ(LastLevelCacheBytes(), farthest > 0 ? farthest : size_t{8} << 20);
}

TEST(CpuCaches, NoProcessorHasALevelZeroOrNine) {
  EXPECT_EQ(CacheBytes(0), 0u);
  EXPECT_EQ(CacheBytes(9), 0u);
}

#ifdef __linux__
std::string Fact(int index, const std::string& name) {
  std::ifstream file("/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index) + "/" + name);
  std::string text;
  file >> text;
  return text;
}

// The C library tells the sum of a package's third-level caches on some processors.
TEST(CpuCaches, AreThoseOfOneProcessor) {
  int compared = 0;
  for (int index = 0; !Fact(index, "level").empty(); ++index) {
    if (Fact(index, "type") == "Instruction" || Fact(index, "size").empty()) continue;
    EXPECT_EQ(std::to_string(CacheBytes(std::stoi(Fact(index, "level"))) >> 10) + "K", Fact(index, "size"));
    ++compared;
  }
  if (compared == 0) GTEST_SKIP() << "the system does not tell its caches";
}
#endif

}  // namespace
}  // namespace prismo::platform

// Files that change under the prismo command's hands.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "error.h"
#include "output_file.h"
#include "raw_input.h"
#include "support/temp_folder.h"

namespace prismo::test {
namespace {

namespace fs = std::filesystem;

// A frame comes whole or not at all.
TEST(VanishingFiles, AFrameThatShrinksWhileItIsRead) {
  const TempFolder folder;
  const std::string path = folder / "frame.raw";
  constexpr uint32_t kSide = 512;
  WriteFile(path, Bytes(kSide * kSide, 0x77));
  const tool::DumpLayout layout{tool::Size{kSide, kSide}, &tool::FormatByName("Mono8")};
  std::atomic<bool> stop{false};
  std::thread shrinker([&] {
    for (uint32_t round = 0; !stop; ++round) fs::resize_file(path, round % 2 ? kSide * kSide : 1000);
  });
  int whole = 0;
  for (int round = 0; round < 200; ++round) {
    try {
      whole += tool::ReadFrame(path, layout).bytes.size() == kSide * kSide;
    } catch (const tool::Error& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with(path)) << error.what();
      ++whole;
    }
  }
  EXPECT_EQ(whole, 200);
  stop = true;
  shrinker.join();
}

TEST(VanishingFiles, AFrameThatGoesBeforeItIsRead) {
  const TempFolder folder;
  const std::string path = folder / "frame.raw";
  EXPECT_THROW(tool::ReadFrame(path, {tool::Size{4, 4}, &tool::FormatByName("Mono8")}), tool::FileError);
}

TEST(VanishingFiles, TheFolderOfAnOutputThatIsBeingWritten) {
  const TempFolder folder;
  const fs::path inner = folder / "inner";
  fs::create_directory(inner);
  tool::OutputFile output(inner / "x.bmp");
  WriteFile(output.scratch(), Bytes(100));
  fs::remove_all(inner);
  EXPECT_THROW(output.Commit(), tool::FileError);
  EXPECT_FALSE(fs::exists(inner));
}

TEST(VanishingFiles, AScratchFileThatSomebodyRemoved) {
  const TempFolder folder;
  tool::OutputFile output(folder / "x.bmp");
  for (const auto& entry : fs::directory_iterator(folder / "")) fs::remove(entry);
  EXPECT_THROW(output.Commit(), tool::FileError);
  EXPECT_TRUE(fs::is_empty(folder / ""));
}

}  // namespace
}  // namespace prismo::test

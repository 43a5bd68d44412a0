// The prismo command on Windows: what it prints, writes and refuses.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "support/generators.h"
#include "support/temp_folder.h"
#include "windows/process.h"

namespace prismo::test {
namespace {

constexpr uint32_t kWidth = 50;
constexpr uint32_t kHeight = 40;

class Tool : public testing::Test {
 protected:
  Tool() {
    std::filesystem::create_directory(home_);
    Random random(Seed());
    frame_ = RandomBytes(kWidth * kHeight, random);
    EXPECT_EQ(SaveRWH(frame_.data(), PRISMO_BAYER_RG8, kWidth, kHeight, Path("a frame.rwh").c_str()), 0u);
  }

  std::string Path(const std::string& name) const { return home_ + '\\' + name; }

  // The exit code; what was printed, on either output, goes to printed_.
  int Run(const std::string& arguments) {
    const std::string output = folder_ / "printed";
    const int code = std::system(
        ("\"\"" + ProgramFolder() + "\\prismo.exe\" " + arguments + " >\"" + output + "\" 2>&1\"").c_str());
    printed_ = ReadText(output);
    return code;
  }

  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(home_))
      names.push_back(entry.path().filename().string());
    return names;
  }

  const TempFolder folder_;
  const std::string home_ = folder_ / "my pictures";
  Bytes frame_;
  std::string printed_;
};

TEST_F(Tool, DescribesFormatsAndFrames) {
  EXPECT_EQ(Run("formats"), 0);
  EXPECT_NE(printed_.find("BayerRG12"), std::string::npos) << printed_;
  EXPECT_EQ(Run("info \"" + Path("a frame.rwh") + '"'), 0);
  EXPECT_NE(printed_.find("BayerRG8"), std::string::npos) << printed_;
  EXPECT_NE(printed_.find("50x40"), std::string::npos) << printed_;
}

TEST_F(Tool, ConvertsToWhatTheLibraryGives) {
  ASSERT_EQ(Run("convert \"" + Path("a frame.rwh") + "\" -o \"" + Path("a picture.bgra") + '"'), 0)
      << printed_;
  Bytes expected(4 * frame_.size());
  ASSERT_EQ(ByrRG8ToBGRA_SP(expected.data(), frame_.data(), kWidth, kHeight), 0u);
  EXPECT_EQ(ReadFile(Path("a picture.bgra")), expected);
  EXPECT_EQ(Run("convert \"" + Path("a frame.rwh") + "\" -o - --as bgra"), 0);
}

TEST_F(Tool, ReplacesPictures) {
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(Run("convert \"" + Path("a frame.rwh") + "\" -o \"" + Path("x.bmp") + '"'), 0) << printed_;
    ASSERT_EQ(Run("convert \"" + Path("a frame.rwh") + "\" -o \"" + Path("x.jpg") + '"'), 0) << printed_;
  }
  EXPECT_EQ(LittleEndian(ReadFile(Path("x.bmp")), 0, 2), 0x4D42u);
  EXPECT_EQ(LittleEndian(ReadFile(Path("x.jpg")), 0, 2), 0xD8FFu);
  EXPECT_EQ(Files().size(), 3u);
}

TEST_F(Tool, RefusesToReplaceItsInput) {
  EXPECT_EQ(Run("convert \"" + Path("a frame.rwh") + "\" -o \"" + Path("A FRAME.RWH") + '"'), 1);
  EXPECT_TRUE(printed_.starts_with("prismo: ")) << printed_;
  EXPECT_EQ(ReadFile(Path("a frame.rwh")).size(), 16 + frame_.size());
}

TEST_F(Tool, SaysThatItHasNoPng) {
  EXPECT_EQ(Run("convert \"" + Path("a frame.rwh") + "\" -o \"" + Path("x.png") + '"'), 1);
  EXPECT_NE(printed_.find("x.png: this prismo was built without PNG"), std::string::npos) << printed_;
  EXPECT_EQ(Files().size(), 1u) << "the frame and nothing else";
}

TEST_F(Tool, Demo) {
  ASSERT_EQ(Run("demo -o \"" + Path("demo") + '"'), 0) << printed_;
  for (const char* name : {"demo\\frame.rwh", "demo\\bilinear.bmp", "demo\\bilinear.jpg", "demo\\detail.bmp"})
    EXPECT_GT(ReadFile(Path(name)).size(), 1000u) << name;
}

}  // namespace
}  // namespace prismo::test

#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

namespace fs = std::filesystem;

using BatchTest = ToolTest;

TEST_F(BatchTest, ConvertsManyFilesIntoAFolder) {
  for (int i = 0; i < 12; ++i) MakeFrame("f" + std::to_string(i), PRISMO_BAYER_GR10, 64, 48);
  const std::string text = RunWell("convert f*.rwh -o pictures/ --as png --threads 3");
  EXPECT_NE(text.find("12 of 12 files written"), std::string::npos) << text;
  for (int i = 0; i < 12; ++i) {
    const std::string name = "f" + std::to_string(i);
    RunWell("convert " + name + ".rwh -o single.png");
    EXPECT_EQ(Content("pictures/" + name + ".png"), Content("single.png")) << name;
  }
}

TEST_F(BatchTest, ABadFileDoesNotStopTheOthers) {
  MakeFrame("a", PRISMO_MONO8, 8, 8);
  MakeFrame("c", PRISMO_RGB8, 8, 8);
  WriteText(Path("b.rwh"), "not a frame, whatever its name says");
  const Outcome outcome = Run("convert a.rwh b.rwh c.rwh none.rwh -o out/");
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_NE(outcome.out.find("out/a.bmp: 8x8 from Mono8"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("out/c.bmp: 8x8 from RGB8"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("2 of 4 files written"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.err.find("prismo: b.rwh: the header"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("prismo: none.rwh: no such file"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("prismo: 2 of 4 files failed"), std::string::npos) << outcome.err;
  EXPECT_EQ(outcome.err.find('\r'), std::string::npos) << "progress is for terminals";
  EXPECT_TRUE(fs::exists(Path("out/a.bmp")));
  EXPECT_TRUE(fs::exists(Path("out/c.bmp")));
  EXPECT_EQ(std::distance(fs::directory_iterator(Path("out")), fs::directory_iterator()), 2);
}

TEST_F(BatchTest, SkipsWhatIsThereAndNoOlder) {
  for (const char* name : {"a", "b", "c"}) MakeFrame(name, PRISMO_MONO8, 8, 8);
  RunWell("convert a.rwh b.rwh -o out/");
  WriteText(Path("out/a.bmp"), "as it was");
  fs::last_write_time(Path("out/b.bmp"), fs::last_write_time(Path("b.rwh")) - std::chrono::seconds(1));
  const std::string text = RunWell("convert a.rwh b.rwh c.rwh -o out/ --skip-existing");
  EXPECT_NE(text.find("1 of 3 files are there already"), std::string::npos) << text;
  EXPECT_NE(text.find("2 of 2 files written"), std::string::npos) << text;
  EXPECT_EQ(ReadText(Path("out/a.bmp")), "as it was");
  EXPECT_GT(fs::file_size(Path("out/b.bmp")), 64u);

  EXPECT_EQ(RunWell("convert a.rwh -o out/a.bmp --skip-existing"), "out/a.bmp: is there already\n");
  EXPECT_EQ(RunWell("convert a.rwh b.rwh c.rwh -o out/ --skip-existing").substr(0, 35),
            "3 of 3 files are there already\n0 of");
  RunWell("convert a.rwh -o out/a.bmp");
  EXPECT_NE(ReadText(Path("out/a.bmp")), "as it was");
  ExpectFailure("convert none.rwh -o out/none.bmp --skip-existing", {"none.rwh", "no such file"});
}

TEST_F(BatchTest, AFolderTakesASingleFileToo) {
  MakeFrame("a", PRISMO_MONO8, 8, 8);
  fs::create_directory(Path("out"));
  RunWell("convert a.rwh -o out");
  EXPECT_TRUE(fs::exists(Path("out/a.bmp")));
}

TEST_F(BatchTest, FilesThatWouldReplaceEachOther) {
  fs::create_directory(Path("other"));
  MakeFrame("a", PRISMO_MONO8, 8, 8);
  MakeFrame("other/a", PRISMO_MONO8, 8, 8);
  fs::create_directory(Path("out"));
  ExpectFailure("convert a.rwh other/a.rwh -o out", {"a.rwh and other/a.rwh", "out/a.bmp"});
  EXPECT_TRUE(fs::is_empty(Path("out")));
  ExpectFailure("convert a.rwh other/a.rwh -o a.rwh", {"a.rwh", "is not a folder"});
  ExpectFailure("convert a.rwh other/a.rwh -o none/x.bmp/ --as tiff", {"'tiff'"});
}

TEST_F(BatchTest, MirrorAndMosaicTakeManyFilesToo) {
  MakeFrame("a", PRISMO_BGR8, 8, 8);
  MakeFrame("b", PRISMO_BGR8, 8, 8);
  RunWell("mirror a.rwh b.rwh --vertical -o mirrored/");
  EXPECT_TRUE(fs::exists(Path("mirrored/a.rwh")));
  EXPECT_TRUE(fs::exists(Path("mirrored/b.rwh")));
  RunWell("convert a.rwh b.rwh -o photos/");
  RunWell("mosaic photos/a.bmp photos/b.bmp --format BGR8 -o frames/");
  EXPECT_EQ(Content("frames/a.rwh"), Content("a.rwh"));
  EXPECT_EQ(Content("frames/b.rwh"), Content("b.rwh"));
}

}  // namespace
}  // namespace prismo::test

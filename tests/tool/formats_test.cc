#include <algorithm>
#include <sstream>

#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

using FormatsTest = ToolTest;

TEST_F(FormatsTest, ListsEveryFormatAsTheLibraryDescribesIt) {
  std::istringstream lines(RunWell("formats"));
  std::string line;
  std::getline(lines, line);  // the head of the table
  for (const NamedFormat& format : AllFormats()) {
    ASSERT_TRUE(std::getline(lines, line)) << format.name;
    std::istringstream columns(line);
    std::string name, code, kind;
    unsigned bits = 0, depth = 0;
    columns >> name >> code >> bits >> depth >> kind;
    EXPECT_EQ(name, format.name);
    EXPECT_EQ(std::stoul(code, nullptr, 16), format.code) << name;
    EXPECT_EQ(bits, BitPerPixel(format.code)) << name;
    EXPECT_EQ(depth, format.code == PRISMO_MONO8_PADDED ? 8 : DataDepth(format.code)) << name;
    EXPECT_EQ(kind == "Bayer", IsPixelBayer(format.code)) << name;
    EXPECT_EQ(kind == "mono", IsMonochromic(format.code)) << name;
  }
  EXPECT_FALSE(std::getline(lines, line)) << line;
}

TEST_F(FormatsTest, InfoDescribesAFrame) {
  WriteFile(Path("d.raw"), {1, 0, 2, 0, 3, 0, 0xFF, 0x0F});
  const std::string text = RunWell("info d.raw --size 2x2 --format bayerrg12");
  EXPECT_NE(text.find("BayerRG12 (Bayer, 12 bits)"), std::string::npos) << text;
  EXPECT_NE(text.find("size     2x2"), std::string::npos) << text;
  EXPECT_NE(text.find("row      4 bytes"), std::string::npos) << text;
  EXPECT_NE(text.find("red      1 to 1, mean 1.0, 0 of 1 at 4095"), std::string::npos) << text;
  EXPECT_NE(text.find("green    2 to 3, mean 2.5, 0 of 2 at 4095"), std::string::npos) << text;
  EXPECT_NE(text.find("blue     4095 to 4095, mean 4095.0, 1 of 1 at 4095"), std::string::npos) << text;
}

TEST_F(FormatsTest, InfoReadsEveryFormat) {
  for (const NamedFormat& format : AllFormats()) {
    MakeFrame("f", format.code, 8, 2);
    const std::string text = RunWell("info f.rwh");
    EXPECT_NE(text.find(format.name), std::string::npos) << text;
  }
}

TEST_F(FormatsTest, HelpSucceeds) {
  EXPECT_NE(RunWell("--help").find("convert"), std::string::npos);
  for (const char* command : {"formats", "info", "convert", "mirror", "mosaic", "compare", "log", "demo"}) {
    EXPECT_NE(RunWell(command + std::string(" --help")).find("Usage"), std::string::npos) << command;
  }
}

TEST_F(FormatsTest, ItSaysWhichVersionItIs) { EXPECT_TRUE(RunWell("--version").starts_with("prismo 1.")); }

TEST_F(FormatsTest, WrongUsageIsNamed) {
  ExpectWrongUsage("nonsense", {"not expected: nonsense", "prismo --help"});
  ExpectWrongUsage("nonsense info f.rwh", {"nonsense"});
  ExpectWrongUsage("--nonsense", {"--nonsense"});
  ExpectWrongUsage("", {"command", "prismo --help"});
  ExpectWrongUsage("info ''", {"FILE", "empty"});
  ExpectWrongUsage("convert '' -o x.bmp", {"INPUT", "empty"});
  ExpectWrongUsage("convert a.rwh -o ''", {"--output", "empty"});
  ExpectWrongUsage("compare a.bmp ''", {"B", "empty"});
  for (const char* option : {"--gain", "--size", "--format", "--threads", "--rect", "--demosaic", "--as"}) {
    ExpectWrongUsage(std::string("convert a.rwh -o x.bmp ") + option + " ''", {option, "empty"});
  }
}

TEST_F(FormatsTest, WrongUsageExitsWith2) {
  for (const char* arguments :
       {"", "nonsense", "info", "convert a.rwh", "formats --nonsense", "convert a -o b --gamma x",
        "convert a -o b --quality 101", "convert a -o b --black -1", "convert a -o b --gamma nan",
        "convert a -o b --gamma inf", "convert a -o b --gamma 0", "demo --gamma nan", "demo --gamma -nan",
        "--nonsense", "convert nonsense formats"}) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.exit_code, 2) << arguments;
    EXPECT_TRUE(outcome.err.starts_with("prismo: ")) << outcome.err;
    EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1) << outcome.err;
  }
}

}  // namespace
}  // namespace prismo::test

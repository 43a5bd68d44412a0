#include <algorithm>
#include <regex>
#include <sstream>

#include "bench/json.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

using bench::Json;

class BenchTest : public ToolTest {
 protected:
  // One row, measured in a moment.
  static std::string OneRow(const std::string& options = "") {
    return "bench --size 64x64 --filter '^mono/Mono8/BGRA/caller' --rounds 1 --min-time 0 " + options;
  }

  // The results of that row with the ratio to the limit that we say.
  void WriteBaseline(const std::string& over_limit) {
    RunWell(OneRow("--json measured.json"));
    const std::regex measured(R"("over_limit": [^,]*)");
    WriteText("before.json",
              std::regex_replace(ReadText(Path("measured.json")), measured, "\"over_limit\": " + over_limit));
  }

  void WriteText(const std::string& name, const std::string& text) {
    WriteFile(Path(name), Bytes(text.begin(), text.end()));
  }
};

TEST_F(BenchTest, ATableAndItsJson) {
  const std::string table = RunWell(OneRow("--json r.json"));
  EXPECT_NE(table.find("processor: "), std::string::npos) << table;
  std::istringstream row(table.substr(std::min(table.find("\nmono/"), table.size())));
  std::string name, spread;
  double ms = 0, megapixels = 0, gigabytes = 0, over_limit = 0;
  ASSERT_TRUE(row >> name >> ms >> megapixels >> gigabytes >> over_limit >> spread) << table;
  EXPECT_EQ(name, "mono/Mono8/BGRA/caller/64x64");
  for (const double figure : {ms, megapixels, gigabytes, over_limit}) {
    EXPECT_GE(figure, 0) << table;  // rounded: a busy machine may show 0.00
    EXPECT_LT(figure, 1e9) << table;
  }

  const Json json = bench::ParseJson(ReadText(Path("r.json")));
  EXPECT_GE(json["machine"].members.size(), 3u);
  ASSERT_EQ(json["results"].members.size(), 1u);
  const Json& result = json["results"].members[0];
  EXPECT_EQ(result["name"].text, name);
  EXPECT_EQ(result["pixels"].number, 64 * 64);
  EXPECT_EQ(result["bytes"].number, 64 * 64 * 5);
  const double seconds = result["seconds"].number;
  ASSERT_GT(seconds, 0);
  EXPECT_NEAR(result["megapixels_per_second"].number, 64 * 64 / seconds / 1e6, 1e-4 / seconds);
  EXPECT_NEAR(result["bytes_per_second"].number, 64 * 64 * 5 / seconds, 1 / seconds);
  EXPECT_GT(result["over_limit"].number, 0);
}

TEST_F(BenchTest, EveryKindOfRowRuns) {
  const std::string table = RunWell(
      "bench --size 16x16 --rounds 1 --min-time 0 --misalign 16 --filter "
      "'^(file|engine|rectangle|raw/BGR8/YUV411|bayer/BGR10)/'");
  for (const char* name : {"file/BGRA8/bmp/caller", "file/raw/RG8/caller", "file/BGR8/jpeg90/caller",
                           "engine/rows/none/pool1", "engine/RG8/BGRA-logged/pool1",
                           "rectangle/RG8/Pad/pool1", "raw/BGR8/YUV411/caller", "bayer/BGR10/RG12/caller"}) {
    EXPECT_NE(table.find(name), std::string::npos) << name << " is not in\n" << table;
  }
  EXPECT_EQ(table.find("failed"), std::string::npos) << table;
  EXPECT_TRUE(Files().empty());
}

TEST_F(BenchTest, TheListCoversCallerAndPoolAtAllSizes) {
  const std::string all = RunWell("bench --list --all");
  for (const char* name : {"mono/Mono16/Pad/pool1/4096x3000", "bilinear/RG10/BGR/caller/1920x1080",
                           "yuv/YUV422/BGRA/pool1/5120x5120", "adaptive/RG8/Pad/caller/2448x2048",
                           "adaptive/RG8/BGRA/pool1/64x64", "engine/rows/none/pool1/320x240"}) {
    EXPECT_NE(all.find(std::string(name) + '\n'), std::string::npos) << name;
  }
  EXPECT_LT(RunWell("bench --list").size(), all.size() / 5);
}

TEST_F(BenchTest, ComparisonNamesTheRowsThatBecameSlower) {
  WriteBaseline("0.0001");
  const Outcome slower = Run(OneRow("--compare before.json"));
  EXPECT_EQ(slower.exit_code, 1);
  EXPECT_NE(slower.out.find("slower: mono/Mono8/BGRA/caller/64x64"), std::string::npos) << slower.out;
  EXPECT_NE(slower.out.find("1 of 1 rows"), std::string::npos) << slower.out;
  EXPECT_EQ(slower.err, "prismo: before.json: rows that were faster when it was written: 1\n");

  WriteBaseline("1e6");
  EXPECT_NE(RunWell(OneRow("--compare before.json")).find("0 of 1 rows"), std::string::npos);
}

TEST_F(BenchTest, ResultsThatCannotBeComparedWith) {
  ExpectFailure(OneRow("--compare none.json"), {"none.json", "cannot be read", "No such file"});
  WriteText("bad.json", "");
  for (const char* text : {"no results", "{\"results\": [", "{\"results\": \"\\", "{\"a\": 1} 2", "[nul]"}) {
    WriteText("bad.json", text);
    ExpectFailure(OneRow("--compare bad.json"), {"bad.json", "no JSON from byte"});
  }
  WriteText("bad.json", std::string(100'000, '['));
  ExpectFailure(OneRow("--compare bad.json"), {"bad.json", "no JSON from byte"});
  WriteText("bad.json", "{\"results\": []}");
  ExpectFailure(OneRow("--compare bad.json"), {"bad.json", "holds no results", "--json"});
  WriteText("other.json", "{\"results\": [{\"name\": \"mono\", \"over_limit\": 1.5}]}");
  const Outcome nothing = Run(OneRow("--compare other.json"));
  EXPECT_EQ(nothing.exit_code, 1);
  EXPECT_EQ(nothing.err,
            "prismo: other.json: has none of the rows of this run; --filter and --size select others\n");
}

TEST_F(BenchTest, WhatItCannotMeasure) {
  for (const char* size :
       {"64", "64x", "x64", "16x8", "66x64", "64x63", "-8x8", "16x16x16", "99999999999x16", "16x40000"}) {
    ExpectFailure(std::string("bench --size='") + size + "'",
                  {std::string("'") + size + "'", "for example 1920x1080"});
  }
  ExpectFailure("bench --filter 'no such row'", {"'no such row'", "--list --all names all rows"});
  ExpectFailure("bench --filter '['", {"'['", "not a regular expression"});
  ExpectFailure(OneRow("--json none/r.json"), {"none/r.json", "there is no folder none"});
  ExpectWrongUsage(OneRow("--folder none"), {"--folder", "none"});
  ExpectWrongUsage(OneRow("--rounds 0"), {"--rounds", "1 to 1000"});
}

}  // namespace
}  // namespace prismo::test

// The library as its users meet it: the header, the names, the layout of the work record, what it needs at
// run time.
#include "PrismoUtl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>

extern "C" int PrismoFromC(void);

namespace {

using Names = std::set<std::string>;

std::string Read(const char* path) {
  std::ifstream file(path);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string OutputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string output;
  char buffer[4096];
  while (const size_t count = fread(buffer, 1, sizeof buffer, pipe.get())) output.append(buffer, count);
  return output;
}

Names Matches(const std::string& text, const std::regex& pattern) {
  Names names;
  for (std::sregex_iterator i(text.begin(), text.end(), pattern), end; i != end; ++i) names.insert((*i)[1]);
  return names;
}

// Lines of the preprocessor define the marker of the declarations; they are no declarations.
std::string WithoutDirectives(const std::string& text) {
  return std::regex_replace(text, std::regex(R"((^|\n)#[^\n]*)"), "\n");
}

Names Missing(const Names& from, const Names& names) {
  Names missing;
  std::ranges::set_difference(names, from, std::inserter(missing, missing.end()));
  return missing;
}

Names ListedNames() { return Matches(Read(PRISMO_EXPORT_LIST), std::regex(R"((\w+))")); }

TEST(Abi, TheHeaderDeclaresTheListedNames) {
  const Names declared =
      Matches(WithoutDirectives(Read(PRISMO_HEADER)), std::regex(R"(PRISMO_API\s[\w\s*]*?\b(\w+)\()"));
  EXPECT_GT(declared.size(), 280u);
  EXPECT_EQ(Missing(declared, ListedNames()), Names());
  EXPECT_EQ(Missing(ListedNames(), declared), Names());
}

TEST(Abi, TheLibraryDefinesTheListedNamesAndNoOthers) {
  const std::string symbols =
      OutputOf(std::string(PRISMO_NM) + " -D --defined-only '" + PRISMO_LIBRARY + "'");
  const Names defined = Matches(symbols, std::regex(R"([0-9a-f]+ [B-Zb-z] (\w+))"));
  EXPECT_EQ(Missing(defined, ListedNames()), Names());
  EXPECT_EQ(Missing(ListedNames(), defined), Names());
}

TEST(Abi, TheLibraryNeedsOnlyTheSystemAndTheEncoder) {
  const std::string dynamic = OutputOf(std::string(PRISMO_READELF) + " -d '" + PRISMO_LIBRARY + "'");
  const Names needed = Matches(dynamic, std::regex(R"(\(NEEDED\).*\[([^\]]+)\])"));
  EXPECT_FALSE(needed.empty());
  const std::regex allowed(
      R"((libc|libm|libstdc\+\+|libgcc_s|libturbojpeg|libasan|libubsan|libtsan|ld-linux[-\w]*)\.so\.\d+)");
  for (const std::string& name : needed) EXPECT_TRUE(std::regex_match(name, allowed)) << name;
  EXPECT_NE(dynamic.find("libPrismoUtl.so.1"), std::string::npos);
}

TEST(Abi, TheHeaderServesC) { EXPECT_EQ(PrismoFromC(), 0); }

TEST(Abi, OneFunctionHasTwoNames) { EXPECT_EQ(&ConvYUV444PToBGRPad, &ConvYUV444PToBGR); }

TEST(Abi, ConvertersAreTheExportedFunctions) {
  EXPECT_EQ(GetBGRAConverter(PRISMO_BAYER_GR8, 1), &ConvByrGR8ToBGRA);
  EXPECT_EQ(GetBGRConverter(PRISMO_YUV444, 0), &ConvYUV444PToBGR);
  EXPECT_EQ(GetBGRConverter(PRISMO_YUV444, 0), &ConvYUV444PToBGRPad);
}

TEST(Abi, LayoutOfTheWorkRecord) {
  static_assert(sizeof(void*) == 8);
  EXPECT_EQ(offsetof(MPWork, WorkID), 0u);
  EXPECT_EQ(offsetof(MPWork, Callback), 8u);
  EXPECT_EQ(offsetof(MPWork, Type), 16u);
  EXPECT_EQ(offsetof(MPWork, Src), 24u);
  EXPECT_EQ(offsetof(MPWork, SrcWidth), 32u);
  EXPECT_EQ(offsetof(MPWork, SrcHeight), 36u);
  EXPECT_EQ(offsetof(MPWork, SrcStride), 40u);
  EXPECT_EQ(offsetof(MPWork, SrcBytesPerPixel), 44u);
  EXPECT_EQ(offsetof(MPWork, Dst), 48u);
  EXPECT_EQ(offsetof(MPWork, DstWidth), 56u);
  EXPECT_EQ(offsetof(MPWork, DstHeight), 60u);
  EXPECT_EQ(offsetof(MPWork, DstStride), 64u);
  EXPECT_EQ(offsetof(MPWork, DstBytesPerPixel), 68u);
  EXPECT_EQ(offsetof(MPWork, Param), 72u);
  EXPECT_EQ(offsetof(MPWork, FirstY), 76u);
  EXPECT_EQ(offsetof(MPWork, LastY), 80u);
  EXPECT_EQ(offsetof(MPWork, FirstX), 84u);
  EXPECT_EQ(offsetof(MPWork, LastX), 88u);
  EXPECT_EQ(offsetof(MPWork, DstX), 92u);
  EXPECT_EQ(offsetof(MPWork, DstY), 96u);
  EXPECT_EQ(offsetof(MPWork, CurrentY), 100u);
  EXPECT_EQ(offsetof(MPWork, WorkToDo), 104u);
  EXPECT_EQ(offsetof(MPWork, AccessCounter), 108u);
  EXPECT_EQ(offsetof(MPWork, Status), 112u);
  EXPECT_EQ(offsetof(MPWork, BlockList), 120u);
  EXPECT_EQ(offsetof(MPWork, NextBlock), 128u);
  EXPECT_EQ(offsetof(MPWork, Lock), 136u);
  EXPECT_EQ(offsetof(MPWork, DoneEvent), 144u);
}

}  // namespace

// The library's file: the names that it exports, what it needs at run time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>

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

}  // namespace

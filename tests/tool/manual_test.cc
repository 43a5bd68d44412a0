// The manual page and the help name the same commands and options.
#include <regex>
#include <set>

#include "tool_test.h"

namespace prismo::test {
namespace {

using Words = std::set<std::string>;

Words AllMatches(const std::string& text, const char* pattern) {
  const std::regex expression(pattern);
  Words words;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
    words.insert((*match)[1]);
  return words;
}

class Manual : public ToolTest {};

TEST_F(Manual, NamesTheCommandsAndOptionsOfTheHelp) {
  const std::string page = std::regex_replace(ReadText(PRISMO_MANUAL), std::regex(R"(\\-)"), "-");

  const std::string help = RunWell("--help");
  const Words commands = AllMatches(help.substr(help.find("Subcommands:")), "\n  ([a-z]+) ");
  ASSERT_GE(commands.size(), 8u);
  Words options = AllMatches(help, "(--[a-z][a-z-]*)");
  for (const std::string& command : commands) {
    EXPECT_TRUE(std::regex_search(page, std::regex("\n\\.BR?I? \"?" + command + "\\b"))) << command;
    options.merge(AllMatches(RunWell(command + " --help"), "(--[a-z][a-z-]*)"));
  }
  EXPECT_EQ(AllMatches(page, "(--[a-z][a-z-]*)"), options);
}

}  // namespace
}  // namespace prismo::test

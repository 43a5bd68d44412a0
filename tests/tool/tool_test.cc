#include "tool_test.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>

#include "PrismoUtl.h"

namespace prismo::test {

namespace fs = std::filesystem;

Outcome ToolTest::Run(const std::string& arguments, const std::string& prefix) {
  // What the command prints goes to a folder of its own, so that Files() lists what the command leaves.
  const TempFolder printed;
  const std::string command = "cd '" + (folder / ".") + "' && (" + prefix + " '" PRISMO_TOOL "' " +
                              arguments + ") >'" + (printed / "out") + "' 2>'" + (printed / "err") +
                              "' </dev/null";
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadText(printed / "out"), ReadText(printed / "err")};
}

std::string ToolTest::RunWell(const std::string& arguments) {
  const Outcome outcome = Run(arguments);
  EXPECT_EQ(outcome.exit_code, 0) << arguments;
  EXPECT_EQ(outcome.err, "") << arguments;
  return outcome.out;
}

void ToolTest::ExpectFailure(const std::string& arguments, const std::vector<std::string>& words,
                             const std::string& prefix) {
  ExpectComplaint(1, arguments, words, prefix);
}

void ToolTest::ExpectWrongUsage(const std::string& arguments, const std::vector<std::string>& words) {
  ExpectComplaint(2, arguments, words, "");
}

void ToolTest::ExpectComplaint(int exit_code, const std::string& arguments,
                               const std::vector<std::string>& words, const std::string& prefix) {
  const auto before = Files();
  const Outcome outcome = Run(arguments, prefix);
  EXPECT_EQ(outcome.exit_code, exit_code) << arguments;
  EXPECT_EQ(outcome.out, "") << arguments;
  EXPECT_TRUE(outcome.err.starts_with("prismo: ")) << arguments << '\n' << outcome.err;
  EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1) << arguments << '\n' << outcome.err;
  for (const std::string& word : words) {
    EXPECT_NE(outcome.err.find(word), std::string::npos) << arguments << '\n'
                                                         << outcome.err << "does not say: " << word;
  }
  EXPECT_EQ(Files(), before) << arguments;
}

std::vector<std::string> ToolTest::Files() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder / "."))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

Bytes ToolTest::MakeFrame(const std::string& name, uint32_t code, uint32_t width, uint32_t height) {
  const size_t row_bytes = BytesOfRow(code, width);
  const uint32_t depth = DataDepth(code) ? DataDepth(code) : 8;
  Bytes frame(row_bytes * height);
  for (size_t i = 0; i < frame.size(); ++i) {
    frame[i] = random_.Byte();
    if (depth > 8 && i % 2) frame[i] = static_cast<uint8_t>(frame[i] & ((1u << (depth - 8)) - 1));
  }
  EXPECT_EQ(SaveRWH(frame.data(), code, width, height, Path(name + ".rwh").c_str()), 0u);
  return frame;
}

}  // namespace prismo::test

// Runs the prismo command as a user would, in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/formats.h"
#include "support/generators.h"
#include "support/temp_folder.h"

namespace prismo::test {

struct Outcome {
  int exit_code;
  std::string out;
  std::string err;
};

// A prefix of commands: a limit on the length of files fails writes as a full disk does. What a build for
// coverage counts would not fit either, and goes elsewhere.
inline constexpr char kFullDisk[] =
    "export GCOV_PREFIX=\"$PWD.uncounted\" GCOV_ERROR_FILE=/dev/null; "
    "trap 'rm -rf \"$GCOV_PREFIX\"' EXIT; ulimit -f 2; ";

class ToolTest : public testing::Test {
 protected:
  // `arguments` and `prefix` (what stands before the command) are shell text; the working folder is `folder`.
  Outcome Run(const std::string& arguments, const std::string& prefix = "");

  // Runs a command that has to succeed without a word on standard error, and returns its output.
  std::string RunWell(const std::string& arguments);

  // Runs a command that has to fail: exit code 1, nothing on standard output, one line on standard error that
  // holds all the words, and no file that was not there before.
  void ExpectFailure(const std::string& arguments, const std::vector<std::string>& words,
                     const std::string& prefix = "");

  // The same of a command line that is wrong in itself: exit code 2.
  void ExpectWrongUsage(const std::string& arguments, const std::vector<std::string>& words);

  // Names of the files in the folder, hidden ones included.
  std::vector<std::string> Files() const;

  std::string Path(const std::string& name) const { return folder / name; }
  Bytes Content(const std::string& name) const { return ReadFile(Path(name)); }

  // A frame of random samples within the format's depth, saved as NAME.rwh; returns its bytes.
  Bytes MakeFrame(const std::string& name, uint32_t code, uint32_t width, uint32_t height);

  TempFolder folder;

 private:
  void ExpectComplaint(int exit_code, const std::string& arguments, const std::vector<std::string>& words,
                       const std::string& prefix);
  void SetUp() override { RecordProperty("seed", std::to_string(Seed())); }

  Random random_{Seed()};
};

}  // namespace prismo::test

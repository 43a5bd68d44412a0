#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>

#include "PrismoUtl.h"
#include "commands.h"
#include "error.h"
#include "log_story.h"
#include "output_file.h"
#include "raw_input.h"

namespace prismo::tool {
namespace {

constexpr uint64_t kHeaderBytes = 48;
constexpr uint64_t kRecordBytes = 64;
constexpr std::streamoff kRecordCountAt = 44;

struct LogOptions {
  std::string input;
  std::string output = "-";
  std::string level = "debug";
  bool explain = false;
  bool trace = false;
};

uint32_t ParseLevel(const std::string& text) {
  constexpr std::array levels{"debug", "info", "warn", "error", "fatal"};
  for (uint32_t level = 0; level < levels.size(); ++level) {
    if (text == levels[level]) return level;
  }
  throw Error("--level takes debug, info, warn, error or fatal, not '", text, "'");
}

// Also reads all of it, for the library does not tell whether reading or writing failed.
void CheckLog(const std::string& path) {
  const uint64_t length = LengthOfFile(path);
  if (length < kHeaderBytes) {
    throw FileError(path, "a saved log begins with ", kHeaderBytes, " header bytes, but the file has ",
                    length);
  }
  std::ifstream file(path, std::ios::binary);
  std::array<unsigned char, 4> count{};
  if (!file.seekg(kRecordCountAt).read(reinterpret_cast<char*>(count.data()), count.size())) {
    throw FileError(path, "reading failed: ", std::strerror(errno));
  }
  const uint64_t stated =
      count[0] | uint64_t{count[1]} << 8 | uint64_t{count[2]} << 16 | uint64_t{count[3]} << 24;
  const uint64_t present = (length - kHeaderBytes) / kRecordBytes;
  if (present < stated) {
    throw FileError(path, "the header says ", stated, " records, but the file holds ", present);
  }
  if (!file.ignore(static_cast<std::streamsize>(stated * kRecordBytes))) {
    throw FileError(path, "reading failed: ", std::strerror(errno));
  }
}

// Puts a view of the log in the place of its text.
void Replace(const std::string& text_path, void (*view)(const LogStory& story, std::ostream& out)) {
  std::ifstream text(text_path);
  const LogStory story = ReadStory(text);
  std::ofstream out(text_path, std::ios::binary);
  view(story, out);
  if (!out.flush()) throw Error("writing failed; is the disk full?");
}

void RunLog(const LogOptions& options) {
  const uint32_t level = options.explain || options.trace ? 0 : ParseLevel(options.level);
  CheckLog(options.input);
  ProtectInputs({options.input});
  OutputFile text(options.output);
  if (ConvLogPXU(options.input.c_str(), text.scratch().c_str(), level) != UTL_STS_SUCCESS) {
    throw FileError(text.name(), "writing failed; is the disk full?");
  }
  if (options.explain) Replace(text.scratch(), Explain);
  if (options.trace) Replace(text.scratch(), WriteTrace);
  text.Commit();
}

}  // namespace

void AddLogCommand(CLI::App& app) {
  auto options = std::make_shared<LogOptions>();
  CLI::App* command = app.add_subcommand("log", "Print a saved log of the worker pool as text");
  command->add_option("FILE", options->input, "A saved log (.pxu)")->required();
  command->add_option("-o,--output", options->output, "Text file (default: standard output)");
  command->add_option("--level", options->level, "Leave out records below debug, info, warn, error or fatal");
  CLI::Option* const explain = command->add_flag(
      "--explain", options->explain, "Tell the story of each work, and why those that were given up were");
  CLI::Option* const trace =
      command->add_flag("--trace", options->trace,
                        "Write calls and blocks in the Trace Event Format, which trace viewers open");
  explain->excludes(trace)->excludes("--level");
  trace->excludes("--level");
  command->callback([options] { RunLog(*options); });
}

}  // namespace prismo::tool

// What a saved log tells: the works of the pool, who worked on them and how they ended.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace prismo::tool {

// Times are seconds since the log's beginning.
struct LoggedBlock {
  uint32_t thread;
  int32_t first_row, rows;
  double begin;
  std::optional<double> end;  // none: still open when the log ends
};

struct LoggedWork {
  uint32_t id = 0;
  std::string call;     // the conversion that submitted it, or what the engine calls the submission
  uint32_t thread = 0;  // that submitted it
  std::optional<double> submitted;  // none: older than the log reaches
  int32_t first_row = 0, last_row = -1;
  int blocks_at_first = 0;
  std::vector<double> joined;  // when threads came
  std::vector<LoggedBlock> blocks;
  std::optional<uint32_t> drew_no_rows;  // a thread that drew a block without rows
  std::optional<double> given_up;
  std::optional<double> ended;
  uint32_t status = 0;
  std::optional<double> left;  // when the last thread had left a work that was given up
};

struct LogStory {
  std::string date;
  std::vector<LoggedWork> works;  // by number
  double length = 0;
};

// From the text that ConvLogPXU writes. Lines that do not concern works are passed over.
LogStory ReadStory(std::istream& text);

// For people: a paragraph for each work, and for those that were given up the cause in a sentence.
void Explain(const LogStory& story, std::ostream& out);

// For trace viewers: calls and blocks as JSON in the Trace Event Format.
void WriteTrace(const LogStory& story, std::ostream& out);

}  // namespace prismo::tool

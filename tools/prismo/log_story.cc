#include "log_story.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <istream>
#include <map>
#include <ostream>
#include <set>

namespace prismo::tool {
namespace {

// The parts of a line "%08u ThreadID:%06x WorkID:%04u %-28s message".
struct Event {
  uint32_t ticks, thread, work;
  std::string function, message;
};

std::optional<Event> ParseEvent(const std::string& line) {
  Event event{};
  std::array<char, 64> function{};
  int message_at = 0;
  if (std::sscanf(line.c_str(), "%u ThreadID:%x WorkID:%u %63s %n", &event.ticks, &event.thread, &event.work,
                  function.data(), &message_at) != 4) {
    return std::nullopt;
  }
  event.function = function.data();
  event.message = line.substr(static_cast<size_t>(message_at));
  return event;
}

// The number behind a word of a message, like "len:"; hexadecimal where asked.
std::optional<int64_t> NumberAfter(const std::string& message, const char* word, int base = 10) {
  const size_t at = message.find(word);
  if (at == std::string::npos) return std::nullopt;
  const char* const digits = message.c_str() + at + std::char_traits<char>::length(word);
  char* end = nullptr;
  const int64_t number = std::strtoll(digits, &end, base);
  return end == digits ? std::nullopt : std::optional(number);
}

bool Says(const Event& event, const char* words) { return event.message.find(words) != std::string::npos; }

class Reader {
 public:
  LogStory Read(std::istream& text) {
    double frequency = 0;
    for (std::string line; std::getline(text, line);) {
      long long ticks_per_second = 0;
      if (line.starts_with("Log date: ")) story_.date = line.substr(10);
      if (std::sscanf(line.c_str(), "Performance frequency: %lld", &ticks_per_second) == 1) {
        frequency = static_cast<double>(ticks_per_second);
      }
      const std::optional<Event> event = ParseEvent(line);
      if (!event || frequency <= 0) continue;
      now_ = static_cast<double>(Unwrapped(event->ticks)) / frequency;
      story_.length = std::max(story_.length, now_);
      if (event->work != 0) {
        Take(*event, WorkOf(event->work));
      } else if (event->function.find("MPManager") == std::string::npos && Says(*event, "Started.")) {
        conversion_of_thread_[event->thread] = event->function;
      }
    }
    for (auto& [id, work] : works_) story_.works.push_back(std::move(work));
    return std::move(story_);
  }

 private:
  // The log shows 32 bits of the time; events follow one another within less than half of their range.
  uint64_t Unwrapped(uint32_t ticks) {
    last_ticks_ += static_cast<uint64_t>(
        static_cast<int64_t>(static_cast<int32_t>(ticks - static_cast<uint32_t>(last_ticks_))));
    return last_ticks_;
  }

  LoggedWork& WorkOf(uint32_t id) {
    LoggedWork& work = works_[id];
    work.id = id;
    return work;
  }

  void Take(const Event& event, LoggedWork& work) {
    const std::string& function = event.function;
    if (function == "MPManager::ExecWork" || function == "MPManager::StartWork" ||
        function == "MPManager::WaitWorkDone") {
      TakeCall(event, work);
    } else if (function == "MPManager::AppendWork" && Says(event, "Registered")) {
      work.blocks_at_first = static_cast<int>(NumberAfter(event.message, "WorkToDo:").value_or(0));
    } else if (function == "MPWork::TryAccess" && Says(event, "Access allowed")) {
      work.joined.push_back(now_);
    } else if (function == "MPWork::GetWork" || function == "MPWork::GetWorkLog") {
      TakeHandOut(event, work);
    } else if (function == "MPManager::ExecFunc" && Says(event, "Releases timeout")) {
      work.left = now_;
    }
  }

  void TakeCall(const Event& event, LoggedWork& work) {
    if (Says(event, " started.") && event.function != "MPManager::WaitWorkDone") {
      work.submitted = now_;
      work.thread = event.thread;
      work.first_row = static_cast<int32_t>(NumberAfter(event.message, "FirstY:").value_or(0));
      work.last_row = static_cast<int32_t>(NumberAfter(event.message, "LastY:").value_or(-1));
      const auto conversion = conversion_of_thread_.find(event.thread);
      work.call = conversion != conversion_of_thread_.end() ? conversion->second : event.function;
    } else if (Says(event, "MPWork time out.")) {
      work.given_up = now_;
    } else if (Says(event, " finished in ") && event.function != "MPManager::StartWork") {
      work.ended = now_;
      work.status = static_cast<uint32_t>(NumberAfter(event.message, "tatus:", 16).value_or(0));
    }
  }

  void TakeHandOut(const Event& event, LoggedWork& work) {
    const int64_t inside = NumberAfter(event.message, "access counter:").value_or(0);
    const auto own = std::find_if(work.blocks.rbegin(), work.blocks.rend(), [&](const LoggedBlock& block) {
      return block.thread == event.thread && !block.end;
    });
    if (Says(event, "tarted")) {
      inside_before_[event.thread] = inside;
      if (own != work.blocks.rend()) own->end = now_;
    } else if (Says(event, "Finished acquiring work block.")) {
      work.blocks.push_back({event.thread,
                             static_cast<int32_t>(NumberAfter(event.message, "Start:").value_or(0)),
                             static_cast<int32_t>(NumberAfter(event.message, "len:").value_or(0)),
                             now_,
                             {}});
    } else if (Says(event, "Finished (Work already done)") && inside_before_[event.thread] == inside) {
      work.drew_no_rows = event.thread;  // it was not counted out
    }
  }

  LogStory story_;
  std::map<uint32_t, LoggedWork> works_;
  std::map<uint32_t, std::string> conversion_of_thread_;
  std::map<uint32_t, int64_t> inside_before_;
  uint64_t last_ticks_ = 0;
  double now_ = 0;
};

std::string Milliseconds(double seconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.3f ms", seconds * 1e3);
  return text.data();
}

std::string Thread(uint32_t id) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "thread %06x", id);
  return text.data();
}

std::string RowsOf(const LoggedBlock& block) {
  return "rows " + std::to_string(block.first_row) + " to " +
         std::to_string(int64_t{block.first_row} + block.rows - 1);
}

// The other works that threads were at when a work was given up, or shortly before it.
std::string OthersAtWork(const LogStory& story, const LoggedWork& work) {
  std::set<uint32_t> others;
  for (const LoggedWork& other : story.works) {
    for (const LoggedBlock& block : other.blocks) {
      if (other.id != work.id && block.begin < *work.given_up &&
          block.end.value_or(story.length) > work.submitted.value_or(0)) {
        others.insert(other.id);
      }
    }
  }
  std::string names;
  for (const uint32_t id : others) names += (names.empty() ? "" : ", ") + std::to_string(id);
  return names;
}

std::string CauseOf(const LogStory& story, const LoggedWork& work) {
  const int64_t rows = int64_t{work.last_row} - work.first_row + 1;
  if (work.drew_no_rows) {
    return std::to_string(rows) +
           " rows are too few for the threads of the pool: " + Thread(*work.drew_no_rows) +
           " drew a block without rows, after which a work is never counted as done; convert such frames on "
           "the "
           "caller's thread";
  }
  if (work.submitted && work.blocks_at_first == 0) {
    return "the work had no blocks: its type is unknown, or its blocks were to be larger than its " +
           std::to_string(rows) + " rows";
  }
  if (work.joined.empty() || work.joined.front() > *work.given_up) {
    const std::string others = OthersAtWork(story, work);
    return others.empty()
               ? "no thread came to it in time, though none was at another work: the threads got no processor"
               : "no thread came to it in time: they were at work " + others;
  }
  const LoggedBlock* longest = nullptr;
  for (const LoggedBlock& block : work.blocks) {
    const bool open = block.begin < *work.given_up && block.end.value_or(story.length + 1) > *work.given_up;
    if (open && (!longest || block.begin < longest->begin)) longest = &block;
  }
  const auto done = std::ranges::count_if(
      work.blocks, [&](const LoggedBlock& block) { return block.end && *block.end <= *work.given_up; });
  const std::string progress =
      std::to_string(done) + " of " + std::to_string(work.blocks_at_first) + " blocks were done";
  if (!longest) return progress + ", and no thread was at another: a callback left before the last block";
  return Thread(longest->thread) + " was still at " + RowsOf(*longest) + ", for " +
         Milliseconds(*work.given_up - longest->begin) + " by then; " + progress;
}

void ExplainWork(const LogStory& story, const LoggedWork& work, std::ostream& out) {
  out << "work " << work.id;
  if (work.submitted) {
    out << ": " << work.call << ", rows " << work.first_row << " to " << work.last_row << ", from "
        << Thread(work.thread) << " at " << Milliseconds(*work.submitted) << '\n';
  } else {
    out << ": its beginning is no longer in the log\n";
  }
  if (work.submitted && !work.blocks.empty()) {
    out << "  first block after " << Milliseconds(work.blocks.front().begin - *work.submitted)
        << ", last one ended after ";
    double last = 0;
    for (const LoggedBlock& block : work.blocks) last = std::max(last, block.end.value_or(story.length));
    out << Milliseconds(last - *work.submitted) << '\n';
  }
  std::map<uint32_t, std::pair<int, double>> threads;
  for (const LoggedBlock& block : work.blocks) {
    auto& [blocks, busy] = threads[block.thread];
    ++blocks;
    busy += block.end.value_or(story.length) - block.begin;
  }
  for (const auto& [thread, share] : threads) {
    out << "  " << Thread(thread) << ": " << share.first << (share.first == 1 ? " block, " : " blocks, ")
        << Milliseconds(share.second) << '\n';
  }
  if (work.given_up) {
    out << "  GIVEN UP" << (work.submitted ? " after " + Milliseconds(*work.given_up - *work.submitted) : "")
        << ": " << CauseOf(story, work) << '\n';
    if (work.left)
      out << "  its last thread had left it " << Milliseconds(*work.left - *work.given_up) << " later\n";
  } else if (work.ended) {
    std::array<char, 32> status{};
    std::snprintf(status.data(), status.size(), "status %08x", work.status);
    out << "  " << (work.status == 0 ? "done" : status.data());
    if (work.submitted) out << " after " << Milliseconds(*work.ended - *work.submitted);
    out << '\n';
  } else {
    out << "  not ended when the log was saved\n";
  }
}

// One event of the trace, on the timeline of a thread. Names hold nothing that JSON has to escape.
class Trace {
 public:
  explicit Trace(std::ostream& out) : out_(out) { out_ << "{\"displayTimeUnit\":\"ms\",\"traceEvents\":["; }
  ~Trace() { out_ << "\n]}\n"; }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  void Span(const std::string& name, uint32_t thread, double begin, double end, uint32_t work) {
    Begin(name, thread, "X", begin);
    out_ << ",\"dur\":" << Microseconds(end - begin) << ",\"args\":{\"work\":" << work << "}}";
  }
  void Instant(const std::string& name, uint32_t thread, double at) {
    Begin(name, thread, "i", at);
    out_ << ",\"s\":\"t\"}";
  }
  void NameThread(uint32_t thread, const char* role) {
    Begin("thread_name", thread, "M", 0);
    out_ << ",\"args\":{\"name\":\"" << role << "\"}}";
  }

 private:
  static std::string Microseconds(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", seconds * 1e6);
    return text.data();
  }
  void Begin(const std::string& name, uint32_t thread, const char* phase, double at) {
    out_ << (first_ ? "\n" : ",\n") << "{\"name\":\"" << name << "\",\"ph\":\"" << phase
         << "\",\"pid\":1,\"tid\":" << thread << ",\"ts\":" << Microseconds(at);
    first_ = false;
  }

  std::ostream& out_;
  bool first_ = true;
};

}  // namespace

LogStory ReadStory(std::istream& text) { return Reader().Read(text); }

void Explain(const LogStory& story, std::ostream& out) {
  const auto given_up =
      std::ranges::count_if(story.works, [](const LoggedWork& work) { return work.given_up.has_value(); });
  const auto failed = std::ranges::count_if(
      story.works, [](const LoggedWork& work) { return !work.given_up && work.status != 0; });
  out << "log of " << story.date << ": " << story.works.size() << " works in " << Milliseconds(story.length)
      << ", " << given_up << " given up, " << failed << " failed\n";
  for (const LoggedWork& work : story.works) ExplainWork(story, work, out);
}

void WriteTrace(const LogStory& story, std::ostream& out) {
  Trace trace(out);
  std::map<uint32_t, const char*> roles;
  for (const LoggedWork& work : story.works) {
    const double end = work.ended.value_or(story.length);
    if (work.submitted) {
      roles.try_emplace(work.thread, "caller");
      trace.Span(work.call, work.thread, *work.submitted, end, work.id);
      if (work.given_up) trace.Instant("given up", work.thread, *work.given_up);
    }
    for (const LoggedBlock& block : work.blocks) {
      roles[block.thread] = "worker";
      trace.Span(RowsOf(block), block.thread, block.begin, block.end.value_or(story.length), work.id);
    }
  }
  for (const auto& [thread, role] : roles) trace.NameThread(thread, role);
}

}  // namespace prismo::tool

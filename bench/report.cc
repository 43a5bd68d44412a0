#include "report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace prismo::bench {
namespace {

constexpr char kBegin[] = "<!-- measured: written by prismo_bench --markdown -->";
constexpr char kEnd[] = "<!-- end of measured -->";

template <class... Arguments>
std::string Format(const char* format, Arguments... arguments) {
  char text[256];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

// Three digits that count.
std::string Milliseconds(double seconds) {
  const double ms = 1e3 * seconds;
  return Format(ms < 1 ? "%.4f" : ms < 10 ? "%.3f" : ms < 100 ? "%.2f" : "%.1f", ms);
}

std::string OrDash(double value, const char* format) { return value > 0 ? Format(format, value) : "-"; }

struct Name {
  std::string conversion, threads, size;
};

Name Split(const std::string& name) {
  const size_t size = name.rfind('/');
  const size_t threads = name.rfind('/', size - 1);
  return {name.substr(0, threads), name.substr(threads + 1, size - threads - 1), name.substr(size + 1)};
}

std::string Cell(const Result& result) {
  std::string cell = Milliseconds(result.seconds) + " ms";
  if (result.over_limit > 0) cell += Format(", %.2f L", result.over_limit);
  if (result.faster_than_caller > 0) cell += Format(", %.2f x caller", result.faster_than_caller);
  if (result.faster_than_peer > 0) {
    cell += Format(", %.1f x %s", result.faster_than_peer, result.peer.c_str());
  }
  return cell;
}

// Keeps the order in which things first appear.
template <class Value>
void AddOnce(std::vector<Value>& values, const Value& value) {
  if (std::ranges::find(values, value) == values.end()) values.push_back(value);
}

std::string Tables(const Report& report) {
  std::ostringstream text;
  for (const std::string& fact : report.machine) text << "- " << fact << '\n';

  std::vector<std::string> threads, sizes;
  for (const Result& result : report.results) {
    AddOnce(threads, Split(result.name).threads);
    AddOnce(sizes, Split(result.name).size);
  }
  for (const std::string& kind : threads) {
    std::vector<std::string> conversions;
    std::map<std::pair<std::string, std::string>, std::string> cells;
    for (const Result& result : report.results) {
      const Name name = Split(result.name);
      if (name.threads != kind) continue;
      AddOnce(conversions, name.conversion);
      cells[{name.conversion, name.size}] = Cell(result);
    }
    text << "\n### " << kind << "\n\n| conversion |";
    for (const std::string& size : sizes) text << ' ' << size << " |";
    text << "\n|---|";
    for (size_t i = 0; i < sizes.size(); ++i) text << "---|";
    text << '\n';
    for (const std::string& conversion : conversions) {
      text << "| " << conversion << " |";
      for (const std::string& size : sizes) text << ' ' << cells[{conversion, size}] << " |";
      text << '\n';
    }
  }
  return text.str();
}

}  // namespace

std::string Method(int rounds) {
  return "Each row runs ours, three limits and the peers in turns, " + std::to_string(rounds) +
         " rounds, each after an untimed call of its own,\n"
         "on the same warm buffers. Times are medians over the rounds, ratios medians of each round's "
         "ratio.\n"
         "x L: our time over that of the fastest limit (memcpy, NT stores, plain stores: one thread moving "
         "as\n"
         "many bytes; for files the same bytes written plainly), with half the distance of its quartiles.\n"
         "x caller: how much faster the pool is than the caller's thread. x peer: how much faster than the "
         "peer.";
}

void PrintHead() {
  std::printf("%-46s %10s %8s %7s %13s %-9s %8s %7s %s\n", "conversion/threads/size", "ms", "MP/s", "GB/s",
              "x L", "L", "x caller", "x peer", "peer");
}

void PrintRow(const Result& result) {
  const double spread = (result.over_limit_high - result.over_limit_low) / 2;
  const std::string over_limit =
      result.over_limit > 0 ? Format("%.2f +-%.2f", result.over_limit, spread) : "-";
  std::printf(
      "%-46s %10s %8s %7s %13s %-9s %8s %7s %s\n", result.name.c_str(), Milliseconds(result.seconds).c_str(),
      OrDash(result.pixels / result.seconds / 1e6, "%.0f").c_str(),
      OrDash(result.bytes / result.seconds / 1e9, "%.2f").c_str(), over_limit.c_str(),
      result.limit.empty() ? "-" : result.limit.c_str(), OrDash(result.faster_than_caller, "%.2f").c_str(),
      OrDash(result.faster_than_peer, "%.2f").c_str(), result.peer.empty() ? "-" : result.peer.c_str());
  std::fflush(stdout);
}

void WriteMarkdown(const Report& report, const std::string& path) {
  std::string document;
  if (std::ifstream file(path); file) {
    document.assign(std::istreambuf_iterator<char>(file), {});
  }
  const std::string measured = std::string(kBegin) + "\n\n" + Tables(report) + '\n' + kEnd;
  const size_t begin = document.find(kBegin);
  const size_t end = document.find(kEnd, begin);
  if (begin == std::string::npos || end == std::string::npos) {
    document += measured + '\n';
  } else {
    document.replace(begin, end + sizeof kEnd - 1 - begin, measured);
  }
  std::ofstream file(path);
  file << document;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace prismo::bench

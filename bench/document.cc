#include "document.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "format.h"
#include "report.h"

namespace prismo::bench {
namespace {

constexpr char kBegin[] = "<!-- measured: written by prismo_bench --markdown -->";
constexpr char kEnd[] = "<!-- end of measured -->";

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
  if (result.pixels > 0) {
    cell += Format(", %.0f MP/s, %.2f GB/s", result.pixels / result.seconds / 1e6,
                   result.bytes / result.seconds / 1e9);
  }
  std::string ratios;
  const auto add = [&ratios](const std::string& ratio) {
    ratios += (ratios.empty() ? "<br>" : ", ") + ratio;
  };
  if (result.over_limit > 0) add(Format("%.2f L", result.over_limit));
  if (result.faster_than_caller > 0) add(Format("%.2f x caller", result.faster_than_caller));
  if (result.faster_than_peer > 0) add(Format("%.1f x %s", result.faster_than_peer, result.peer.c_str()));
  return cell + ratios;
}

// Keeps the order in which things first appear.
template <class Value>
void AddOnce(std::vector<Value>& values, const Value& value) {
  if (std::ranges::find(values, value) == values.end()) values.push_back(value);
}

std::string Tables(const Report& report) {
  std::ostringstream text;
  for (const std::string& fact : report.machine) text << "- " << fact << '\n';

  std::vector<std::string> threads;
  for (const Result& result : report.results) AddOnce(threads, Split(result.name).threads);
  for (const std::string& kind : threads) {
    std::vector<std::string> conversions, sizes;
    std::map<std::pair<std::string, std::string>, std::string> cells;
    for (const Result& result : report.results) {
      const Name name = Split(result.name);
      if (name.threads != kind) continue;
      AddOnce(conversions, name.conversion);
      AddOnce(sizes, name.size);
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

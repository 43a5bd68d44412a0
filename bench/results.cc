#include "results.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "format.h"
#include "json.h"

namespace prismo::bench {
namespace {

constexpr struct {
  const char* key;
  std::string Result::*text;
} kTexts[] = {{"name", &Result::name}, {"limit", &Result::limit}, {"peer", &Result::peer}};

constexpr struct {
  const char* key;
  double Result::*number;
} kNumbers[] = {
    {"seconds", &Result::seconds},
    {"pixels", &Result::pixels},
    {"bytes", &Result::bytes},
    {"over_limit", &Result::over_limit},
    {"over_limit_low", &Result::over_limit_low},
    {"over_limit_high", &Result::over_limit_high},
    {"over_memcpy", &Result::over_memcpy},
    {"faster_than_peer", &Result::faster_than_peer},
    {"faster_than_caller", &Result::faster_than_caller},
};

// What carries over between runs, and nearly between machines.
struct Yardstick {
  double multiple = 0;  // 0: there is none
  std::string of = {};
};

Yardstick YardstickOf(const Result& result) {
  if (result.over_limit > 0) return {result.over_limit, "the limit"};
  if (result.faster_than_peer > 0) return {1 / result.faster_than_peer, result.peer};
  return {};
}

}  // namespace

void WriteJson(const Report& report, const std::string& path) {
  std::ofstream file(path);
  file << "{\"machine\": [\n";
  for (size_t i = 0; i < report.machine.size(); ++i) {
    file << (i ? ",\n" : "") << "  {\"fact\": " << Quoted(report.machine[i]) << '}';
  }
  file << "\n], \"results\": [\n";
  for (size_t i = 0; i < report.results.size(); ++i) {
    const Result& result = report.results[i];
    file << (i ? ",\n" : "") << "  {";
    for (const auto& [key, text] : kTexts) file << Quoted(key) << ": " << Quoted(result.*text) << ", ";
    for (const auto& [key, number] : kNumbers) {
      file << Quoted(key) << ": " << Format("%.6g", result.*number) << ", ";
    }
    file << "\"megapixels_per_second\": " << Format("%.6g", result.pixels / result.seconds / 1e6)
         << ", \"bytes_per_second\": " << Format("%.6g", result.bytes / result.seconds) << ", ";
    file << "\"all_seconds\": {";
    for (size_t j = 0; j < result.all_seconds.size(); ++j) {
      const auto& [contestant, seconds] = result.all_seconds[j];
      file << (j ? ", " : "") << Quoted(contestant) << ": " << Format("%.6g", seconds);
    }
    file << "}}";
  }
  file << "\n]}\n";
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

Report ReadJson(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": cannot be read: " + std::strerror(errno));
  std::stringstream text;
  text << file.rdbuf();
  Json json;
  try {
    json = ParseJson(text.str());
  } catch (const std::invalid_argument& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
  Report report;
  for (const Json& fact : json["machine"].members) report.machine.push_back(fact["fact"].text);
  for (const Json& row : json["results"].members) {
    Result& result = report.results.emplace_back();
    for (const auto& [key, text_of] : kTexts) result.*text_of = row[key].text;
    for (const auto& [key, number_of] : kNumbers) result.*number_of = row[key].number;
    for (const Json& contestant : row["all_seconds"].members) {
      result.all_seconds.emplace_back(contestant.name, contestant.number);
    }
  }
  if (report.results.empty()) {
    throw std::runtime_error(path + ": holds no results; a run with --json FILE writes them");
  }
  return report;
}

int CompareWith(const Report& baseline, const std::string& path, const std::vector<Result>& results) {
  constexpr double kTolerance = 1.10;
  int compared = 0;
  int slower = 0;
  for (const Result& result : results) {
    const Yardstick now = YardstickOf(result);
    for (const Result& then : baseline.results) {
      const Yardstick before = YardstickOf(then);
      if (then.name != result.name || now.multiple <= 0 || now.of != before.of) continue;
      ++compared;
      if (now.multiple <= kTolerance * before.multiple) continue;
      ++slower;
      std::cout << Format("slower: %s takes %.2f x %s, took %.2f\n", result.name.c_str(), now.multiple,
                          now.of.c_str(), before.multiple);
    }
  }
  if (compared == 0) {
    throw std::runtime_error(path + ": has none of the rows of this run; --filter and --size select others");
  }
  std::cout << Format("%d of %d rows became more than 10 %% slower than in ", slower, compared) << path
            << '\n';
  return slower;
}

}  // namespace prismo::bench

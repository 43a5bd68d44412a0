#include "results.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>

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

// Our texts hold no control characters.
std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

// What follows "key": in a line, or nothing.
std::string_view ValueOf(std::string_view line, const std::string& key) {
  const std::string label = Quoted(key) + ": ";
  const size_t at = line.find(label);
  return at == std::string_view::npos ? std::string_view() : line.substr(at + label.size());
}

std::string Unquoted(std::string_view value) {
  std::string text;
  for (size_t i = 1; i < value.size() && value[i] != '"'; ++i) {
    if (value[i] == '\\' && i + 1 < value.size()) ++i;
    text += value[i];
  }
  return text;
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
    for (const auto& [key, number] : kNumbers) file << Quoted(key) << ": " << Number(result.*number) << ", ";
    file << "\"all_seconds\": {";
    for (size_t j = 0; j < result.all_seconds.size(); ++j) {
      const auto& [contestant, seconds] = result.all_seconds[j];
      file << (j ? ", " : "") << Quoted(contestant) << ": " << Number(seconds);
    }
    file << "}}";
  }
  file << "\n]}\n";
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

Report ReadJson(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  Report report;
  for (std::string line; std::getline(file, line);) {
    if (const std::string_view fact = ValueOf(line, "fact"); !fact.empty()) {
      report.machine.push_back(Unquoted(fact));
    }
    if (ValueOf(line, "name").empty()) continue;
    Result& result = report.results.emplace_back();
    for (const auto& [key, text] : kTexts) result.*text = Unquoted(ValueOf(line, key));
    for (const auto& [key, number] : kNumbers) {
      result.*number = std::strtod(std::string(ValueOf(line, key)).c_str(), nullptr);
    }
  }
  return report;
}

int CompareWith(const Report& baseline, const std::vector<Result>& results) {
  constexpr double kTolerance = 1.10;
  int compared = 0;
  int slower = 0;
  for (const Result& result : results) {
    for (const Result& before : baseline.results) {
      if (before.name != result.name || before.over_limit <= 0 || result.over_limit <= 0) continue;
      ++compared;
      if (result.over_limit <= kTolerance * before.over_limit) continue;
      ++slower;
      std::printf("slower: %s takes %.2f x the limit, took %.2f\n", result.name.c_str(), result.over_limit,
                  before.over_limit);
    }
  }
  std::printf("%d of %d rows that the baseline knows became more than 10 %% slower\n", slower, compared);
  return slower;
}

}  // namespace prismo::bench

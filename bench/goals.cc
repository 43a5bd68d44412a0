#include "goals.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iostream>
#include <map>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "format.h"

namespace prismo::bench {
namespace {

constexpr std::array<std::string_view, 4> kSizes = {"1920x1080", "2448x2048", "4096x3000", "5120x5120"};
using AtSizes = std::array<double, kSizes.size()>;

constexpr AtSizes Everywhere(double goal) { return {goal, goal, goal, goal}; }

struct Goal {
  const char* conversions;  // a pattern of family/source/target
  AtSizes at;
};

const Goal kOverLimit[] = {
    {"mono/Mono8/BGRA?|packed/(RGB8|BGRA?8)/BGRA?", {1.05, 1.07, 1.04, 1.04}},
    {"mono/Mono1./BGRA", {1.12, 1.05, 1.03, 1.03}},
    {"mono/Mono1./BGR", {1.2, 1.1, 1.05, 1.05}},
    {"packed/(RGB|BGR)1./BGRA", {1.3, 1.15, 1.08, 1.08}},
    {"packed/(RGB|BGR)1./BGR", {1.5, 1.2, 1.1, 1.1}},
    {"yuv/YUV422/BGRA", {1.45, 1.08, 1.03, 1.03}},
    {"yuv/YUV422/BGR", {1.8, 1.4, 1.15, 1.15}},
    {"yuv/YUV411/BGRA", {1.6, 1.1, 1.03, 1.03}},
    {"yuv/YUV411/BGR", {2.0, 1.4, 1.15, 1.15}},
    {"yuv/YUV444/BGRA", {1.6, 1.2, 1.05, 1.05}},
    {"yuv/YUV444/BGR", {2.2, 1.5, 1.2, 1.2}},
    {"bilinear/RG8/BGRA", {1.2, 1.3, 1.03, 1.03}},
    {"bilinear/RG8/(BGR|Pad)", {1.5, 1.5, 1.07, 1.1}},
    {"bilinear/RG1./BGRA", {1.5, 1.2, 1.08, 1.08}},
    {"bilinear/RG1./BGR", {1.8, 1.5, 1.12, 1.12}},
    {"planes/RG8/planes", {1.5, 1.5, 1.1, 1.1}},
    {"planes/(RGB8|BGR8)/planes", Everywhere(1.05)},
    {"adaptive/RG8/BGRA", {2.8, 1.5, 1.35, 1.35}},
    {"adaptive/RG8/(BGR|Pad)", {3.8, 3.0, 1.7, 1.7}},
    {"mirror/.*", Everywhere(1.07)},
    {"raw/BGRA?8/Mono8", {1.6, 1.4, 1.2, 1.2}},
    {"raw/BGRA?8/YUV422", {2.2, 1.8, 1.3, 1.3}},
    {"raw/BGRA?8/YUV444", {2.5, 1.8, 1.25, 1.25}},
    {"bayer/.*", {1.15, 1.15, 1.08, 1.08}},
    {"file/.*/bmp", Everywhere(1.08)},
};

// With AVX2, of the above; 0 where there is no goal.
constexpr AtSizes kAvx2 = {2, 0, 1.1, 1.1};
constexpr AtSizes kAvx512 = Everywhere(1);
constexpr AtSizes kOthers = Everywhere(0);

const Goal kPoolOverCaller[] = {
    {"adaptive/.*", {1.7, 1.7, 1.3, 1.3}},
    {"(bilinear|mono|packed|yuv|planes|mirror|raw|bayer)/.*", {1.5, 1.5, 0.97, 0.97}},
};

constexpr double kTolerance = 1.10;

// What the goals over the limit are multiplied by for the instruction set that the machine's facts name.
AtSizes ShareOf(const std::vector<std::string>& machine) {
  static const std::regex kFact("instruction set: (?:at most ([^ ]*) .*|.*, ([^ ]*))");
  for (const std::string& fact : machine) {
    std::smatch set;
    if (!std::regex_match(fact, set, kFact)) continue;
    const std::string name = set[1].matched ? set[1] : set[2];
    return name == "avx2" ? kAvx2 : name.starts_with("avx512") ? kAvx512 : kOthers;
  }
  return kAvx512;
}

template <size_t kCount>
double GoalOf(const Goal (&goals)[kCount], const std::string& conversion, size_t size) {
  for (const Goal& goal : goals) {
    if (std::regex_match(conversion, std::regex(goal.conversions))) return goal.at[size];
  }
  return 0;
}

struct Judgement {
  double goal;
  double missed_by;  // more than 1 where it is not reached
  std::string what;
  double over_same_bytes;  // 0 where it does not count
  bool out_of_reach;       // of those loops as well: it counts over their time instead
};

// Our time as a multiple of the better loop that reads the source and writes the target; 0 without such
// loops.
double OverSameBytes(const Result& result) {
  double loop = 0;
  for (const auto& [name, seconds] : result.all_seconds) {
    if ((name == "NT" || name == "plain") && (loop <= 0 || seconds < loop)) loop = seconds;
  }
  return loop > 0 ? result.seconds / loop : 0;
}

std::optional<Judgement> Judge(const Result& result, const AtSizes& share) {
  static const std::regex kName("(.*)/(caller|pool2)/([^/]*)");
  std::smatch parts;
  if (!std::regex_match(result.name, parts, kName)) return std::nullopt;
  const std::string conversion = parts[1];
  const auto size = static_cast<size_t>(std::ranges::find(kSizes, parts[3].str()) - kSizes.begin());
  if (size == kSizes.size()) return std::nullopt;
  if (parts[2] == "caller") {
    const double goal = GoalOf(kOverLimit, conversion, size) * share[size];
    if (goal <= 0 || result.over_limit <= 0) return std::nullopt;
    const double over_loops = OverSameBytes(result);
    const bool out_of_reach = result.over_limit > goal * kTolerance && over_loops > 0 &&
                              result.over_limit / over_loops > goal * kTolerance;
    return Judgement{goal, (out_of_reach ? over_loops : result.over_limit) / goal,
                     Format("%.2f x the limit", result.over_limit), over_loops, out_of_reach};
  }
  const double goal = GoalOf(kPoolOverCaller, conversion, size);
  if (goal <= 0 || result.faster_than_caller <= 0) return std::nullopt;
  return Judgement{goal, goal / result.faster_than_caller,
                   Format("%.2f times as fast as the caller's thread", result.faster_than_caller), 0, false};
}

}  // namespace

int ReportGoals(const Report& report) {
  const AtSizes share = ShareOf(report.machine);
  std::map<std::string, Judgement> worst;
  for (const Result& result : report.results) {
    const std::optional<Judgement> judgement = Judge(result, share);
    if (!judgement) continue;
    const auto [row, is_new] = worst.try_emplace(result.name, *judgement);
    if (!is_new && judgement->missed_by > row->second.missed_by) row->second = *judgement;
  }
  int missed = 0, out_of_reach = 0;
  for (const auto& [name, row] : worst) {
    const bool misses = row.missed_by > kTolerance;
    missed += misses;
    out_of_reach += row.out_of_reach;
    if (!misses && !row.out_of_reach) continue;
    std::cout << Format("%s: %s is %s, goal %.2f", misses ? "missed" : "out of reach", name.c_str(),
                        row.what.c_str(), row.goal);
    if (row.over_same_bytes > 0) {
      std::cout << Format("; %.2f x loops that move the same bytes", row.over_same_bytes);
    }
    if (misses && row.out_of_reach) std::cout << ", for which it is out of reach as well";
    std::cout << '\n';
  }
  std::cout << Format(
      "%d of %d rows miss their goal by more than 10 %%; %d out of reach of loops "
      "that move the same bytes count over these\n",
      missed, static_cast<int>(worst.size()), out_of_reach);
  return missed;
}

}  // namespace prismo::bench

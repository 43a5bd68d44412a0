// What was measured, and its file.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace prismo::bench {

struct Result {
  std::string name;  // family/source/target/threads/size
  double seconds = 0;
  double pixels = 0;
  double bytes = 0;  // read and written
  // Time as a multiple of the fastest limit's, with quartiles, and of memcpy's; 0 where there is none.
  std::string limit = {};
  double over_limit = 0, over_limit_low = 0, over_limit_high = 0;
  double over_memcpy = 0;
  // The best peer's time as a multiple of ours; 0 where there is none.
  std::string peer = {};
  double faster_than_peer = 0;
  // The caller form's time as a multiple of the pool's; 0 for the caller form itself.
  double faster_than_caller = 0;
  // The median of everybody who took part.
  std::vector<std::pair<std::string, double>> all_seconds = {};
};

struct Report {
  std::vector<std::string> machine;
  std::vector<Result> results;
};

// JSON with one result a line.
void WriteJson(const Report& report, const std::string& path);

// Throws std::runtime_error when the file holds no results.
Report ReadJson(const std::string& path);

// Prints the results that became over 10 % slower in relation to the limit, or to the peer where there is no
// limit, than they were in the report of this file, and returns how many there are. Throws std::runtime_error
// when nothing can be compared.
int CompareWith(const Report& baseline, const std::string& path, const std::vector<Result>& results);

}  // namespace prismo::bench

// Times several ways to do the same work in turns, so that whatever disturbs the machine disturbs all of
// them.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace prismo::bench {

using Step = std::function<void()>;

enum class Role : uint8_t { kOurs, kCaller, kLimit, kPeer };

struct Contestant {
  Role role;
  std::string name;
  Step run;
  Step before = {};                  // each call, and is not timed
  std::vector<double> seconds = {};  // per call, of each round

  double Median() const;
};

struct Plan {
  int rounds;
  double sample_seconds;  // a sample repeats a call until it lasts this long
};

// Fills in the times. Peers that are far behind the best one leave after their first calls.
void Race(std::vector<Contestant>& contestants, const Plan& plan);

// The quotient of two contestants' times, round by round.
struct Ratio {
  double low, median, high;  // quartiles
};
Ratio RatioOf(const Contestant& a, const Contestant& b);

// The fastest of a role by median, or null when there is none.
const Contestant* FastestOf(const std::vector<Contestant>& contestants, Role role);

}  // namespace prismo::bench

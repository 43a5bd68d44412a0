#include "race.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>

namespace prismo::bench {
namespace {

// Sorts the values.
double Quantile(std::vector<double>& values, double fraction) {
  std::ranges::sort(values);
  const double position = fraction * static_cast<double>(values.size() - 1);
  const size_t below = static_cast<size_t>(position);
  const size_t above = std::min(below + 1, values.size() - 1);
  return std::lerp(values[below], values[above], position - static_cast<double>(below));
}

double TimeOf(const Contestant& contestant, int calls) {
  using Clock = std::chrono::steady_clock;
  const int timed_at_once = contestant.before ? 1 : calls;
  double seconds = 0;
  for (int done = 0; done < calls; done += timed_at_once) {
    if (contestant.before) contestant.before();
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i < timed_at_once; ++i) contestant.run();
    seconds += std::chrono::duration<double>(Clock::now() - begin).count();
  }
  return seconds / calls;
}

}  // namespace

double Contestant::Median() const {
  std::vector<double> sorted = seconds;
  return Quantile(sorted, 0.5);
}

void Race(std::vector<Contestant>& contestants, const Plan& plan) {
  // The first call of each meets cold caches and untouched memory.
  std::vector<double> estimates;
  double best_peer = INFINITY;
  for (const Contestant& contestant : contestants) {
    contestant.run();
    estimates.push_back(TimeOf(contestant, 1));
    if (contestant.role == Role::kPeer) best_peer = std::min(best_peer, estimates.back());
  }
  constexpr double kFarBehind = 2;
  for (size_t i = contestants.size(); i-- > 0;) {
    if (contestants[i].role != Role::kPeer || estimates[i] <= kFarBehind * best_peer) continue;
    contestants.erase(contestants.begin() + static_cast<ptrdiff_t>(i));
    estimates.erase(estimates.begin() + static_cast<ptrdiff_t>(i));
  }

  std::vector<int> calls;
  for (size_t i = 0; i < contestants.size(); ++i) {
    // What comes before a call may take far longer than the call.
    const double most = contestants[i].before ? 20 : 1e5;
    calls.push_back(static_cast<int>(std::clamp(std::ceil(plan.sample_seconds / estimates[i]), 1.0, most)));
  }
  const size_t count = contestants.size();
  for (int round = 0; round < plan.rounds; ++round) {
    for (size_t turn = 0; turn < count; ++turn) {
      const size_t i = (turn + static_cast<size_t>(round)) % count;
      // As long without a clock: near the size of a shared cache it takes some five calls until the cache is
      // in the state that this contestant itself leaves.
      const int untimed = contestants[i].before ? 1 : calls[i];
      for (int call = 0; call < untimed; ++call) contestants[i].run();
      contestants[i].seconds.push_back(TimeOf(contestants[i], calls[i]));
    }
  }
}

Ratio RatioOf(const Contestant& a, const Contestant& b) {
  std::vector<double> ratios;
  for (size_t i = 0; i < a.seconds.size(); ++i) ratios.push_back(a.seconds[i] / b.seconds[i]);
  return {Quantile(ratios, 0.25), Quantile(ratios, 0.5), Quantile(ratios, 0.75)};
}

const Contestant* FastestOf(const std::vector<Contestant>& contestants, Role role) {
  const Contestant* fastest = nullptr;
  for (const Contestant& contestant : contestants) {
    if (contestant.role == role && (!fastest || contestant.Median() < fastest->Median())) {
      fastest = &contestant;
    }
  }
  return fastest;
}

}  // namespace prismo::bench

#include "report.h"

#include <iostream>

#include "format.h"

namespace prismo::bench {
namespace {

std::string OrDash(double value, const char* format) { return value > 0 ? Format(format, value) : "-"; }

std::string OrDash(const std::string& text) { return text.empty() ? "-" : text; }

}  // namespace

std::string Milliseconds(double seconds) {
  const double ms = 1e3 * seconds;
  return Format(ms < 1 ? "%.4f" : ms < 10 ? "%.3f" : ms < 100 ? "%.2f" : "%.1f", ms);
}

std::string Method(int rounds, Peers peers) {
  const bool with_peers = peers == Peers::kSome;
  return std::string("Each row runs ours") +
         (with_peers ? ", three limits and the peers" : " and three limits") + " in turns, " +
         std::to_string(rounds) +
         " rounds, each after untimed calls of its own,\n"
         "on the same warm buffers. Times are medians over the rounds, ratios medians of each round's "
         "ratio.\n"
         "x L: our time over that of the fastest limit (memcpy, NT stores, plain stores: one thread moving "
         "as\n"
         "many bytes; for files the same bytes moved plainly), with half the distance of its quartiles.\n"
         "x caller: how much faster the pool is than the caller's thread." +
         (with_peers ? " x peer: how much faster than the peer." : "");
}

void PrintHead(Peers peers) {
  std::cout << Format("%-46s %10s %8s %7s %13s %-9s %8s", "conversion/threads/size", "ms", "MP/s", "GB/s",
                      "x L", "L", "x caller")
            << (peers == Peers::kSome ? Format(" %7s %s", "x peer", "peer") : "") << '\n';
}

void PrintRow(const Result& result, Peers peers) {
  const double spread = (result.over_limit_high - result.over_limit_low) / 2;
  const std::string over_limit =
      result.over_limit > 0 ? Format("%.2f +-%.2f", result.over_limit, spread) : "-";
  std::cout << Format("%-46s %10s %8s %7s %13s %-9s %8s", result.name.c_str(),
                      Milliseconds(result.seconds).c_str(),
                      OrDash(result.pixels / result.seconds / 1e6, "%.0f").c_str(),
                      OrDash(result.bytes / result.seconds / 1e9, "%.2f").c_str(), over_limit.c_str(),
                      OrDash(result.limit).c_str(), OrDash(result.faster_than_caller, "%.2f").c_str());
  if (peers == Peers::kSome) {
    std::cout << Format(" %7s %s", OrDash(result.faster_than_peer, "%.2f").c_str(),
                        OrDash(result.peer).c_str());
  }
  std::cout << std::endl;
}

}  // namespace prismo::bench

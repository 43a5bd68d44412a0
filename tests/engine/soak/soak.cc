// prismo_soak MINUTES: the pool under full load for so long, with every answer checked and memory watched.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "engine/load.h"
#include "mp/work.h"

namespace {

using prismo::mp::LoadCounts;

// Pages that the process has in memory.
long ResidentPages() {
  std::ifstream file("/proc/self/statm");
  long size = 0, resident = 0;
  file >> size >> resident;
  return resident;
}

}  // namespace

int main(int argc, char** argv) {
  const double minutes = argc == 2 ? std::atof(argv[1]) : 0;
  if (minutes <= 0) {
    std::fprintf(stderr, "usage: prismo_soak MINUTES\n");
    return 2;
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double, std::ratio<60>>(minutes);
  prismo::mp::SharedPoolTarget target;
  LoadCounts total;
  uint32_t rounds = 0;
  long settled_pages = 0;
  for (; std::chrono::steady_clock::now() < end; ++rounds) {
    const LoadCounts counts = prismo::mp::RunLoad(target, rounds, 8, 1000);
    total.done += counts.done;
    total.timed_out += counts.timed_out;
    total.failed += counts.failed;
    if (!counts.error.empty()) {
      std::printf("FAILED in the round with seed %u: %s\n", rounds, counts.error.c_str());
      return 1;
    }
    if (prismo::mp::Work::Live() != 0) {
      std::printf("FAILED: %d work records left behind by the round with seed %u\n", prismo::mp::Work::Live(),
                  rounds);
      return 1;
    }
    if (rounds == 5) settled_pages = ResidentPages();
  }
  const long grown = settled_pages == 0 ? 0 : ResidentPages() - settled_pages;
  std::printf("%u rounds, %llu works done, %llu timed out, %llu failed as asked; memory grew by %ld pages\n",
              rounds, static_cast<unsigned long long>(total.done),
              static_cast<unsigned long long>(total.timed_out), static_cast<unsigned long long>(total.failed),
              grown);
  if (grown > 1024) {
    std::printf("FAILED: memory grows\n");
    return 1;
  }
  return 0;
}

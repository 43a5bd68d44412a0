// prismo_soak MINUTES: the pool under full load for so long, with every answer checked and memory watched.
#include <malloc.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
extern "C" size_t __sanitizer_get_current_allocated_bytes();  // Debian's GCC comes without its header
#define PRISMO_SANITIZED 1
#else
#define PRISMO_SANITIZED 0
#endif

#include "engine/load.h"
#include "mp/work.h"

namespace {

using prismo::mp::LoadCounts;

struct Holdings {
  long heap_bytes;
  long resident_pages;  // 0 under a sanitizer, whose own memory grows with what it remembers
  long files;
};

Holdings WhatTheProcessHolds() {
  [[maybe_unused]] long size = 0;
  long resident = 0;
#if PRISMO_SANITIZED
  const size_t heap = __sanitizer_get_current_allocated_bytes();
#else
  const size_t heap = mallinfo2().uordblks;
  std::ifstream("/proc/self/statm") >> size >> resident;
#endif
  const auto files = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  return {static_cast<long>(heap), resident, static_cast<long>(files)};
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
  Holdings settled{};
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
    if (rounds == 5) settled = WhatTheProcessHolds();
  }
  std::printf("%u rounds, %llu works done, %llu timed out, %llu failed as asked\n", rounds,
              static_cast<unsigned long long>(total.done), static_cast<unsigned long long>(total.timed_out),
              static_cast<unsigned long long>(total.failed));
  if (rounds <= 5) return 0;  // too short to say anything of memory

  const Holdings held = WhatTheProcessHolds();
  const long heap_bytes = held.heap_bytes - settled.heap_bytes;
  const long pages = held.resident_pages - settled.resident_pages;
  const long files = held.files - settled.files;
  std::printf("since the sixth round: %ld bytes of heap, %ld pages in memory, %ld open files\n", heap_bytes,
              pages, files);
  if (heap_bytes > 256 * 1024 || pages > 1024 || files > 0) {
    std::printf("FAILED: grows\n");
    return 1;
  }
  return 0;
}

// prismo_soak MINUTES: the pool under full load for so long, with every answer checked and memory watched.
// prismo_soak restarts COUNT: the pool ended and made again so many times, with a work each time.
#include <malloc.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

void Print(const char* when, const Holdings& held) {
  std::printf("%s: %ld bytes of heap, %ld pages in memory, %ld open files\n", when, held.heap_bytes,
              held.resident_pages, held.files);
}

// The exit code.
int RequireNoGrowth(const Holdings& from, const Holdings& to) {
  const bool grows = to.heap_bytes - from.heap_bytes > 256 * 1024 ||
                     to.resident_pages - from.resident_pages > 1024 || to.files > from.files;
  if (grows) std::printf("FAILED: grows\n");
  return grows;
}

int Restart(uint32_t count) {
  constexpr uint32_t kRows = 100, kSettled = 50;
  prismo::mp::RowCounts rows(kRows);
  const prismo::mp::Body body = rows.CountingBody();
  prismo::mp::SharedPoolTarget target;
  Holdings settled{};
  for (uint32_t restart = 0; restart < count; ++restart) {
    if (restart == kSettled) Print("after 50 restarts", settled = WhatTheProcessHolds());
    target.SetTimeout(60'000);
    const uint32_t status = target.Exec(body, kRows, 1, 0);
    target.Terminate();
    if (status != UTL_STS_SUCCESS || !rows.Each(static_cast<int32_t>(restart) + 1)) {
      std::printf("FAILED in restart %u: status %08x\n", restart, status);
      return 1;
    }
  }
  const Holdings held = WhatTheProcessHolds();
  std::printf("%u restarts\n", count);
  Print("at the end", held);
  return count > kSettled ? RequireNoGrowth(settled, held) : 0;
}

int Soak(double minutes) {
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
  Print("after six rounds", settled);
  Print("at the end", held);
  return RequireNoGrowth(settled, held);
}

}  // namespace

int main(int argc, char** argv) {
  const bool restarts = argc == 3 && std::strcmp(argv[1], "restarts") == 0;
  const double amount = argc == (restarts ? 3 : 2) ? std::atof(argv[argc - 1]) : 0;
  if (amount <= 0) {
    std::fprintf(stderr, "usage: prismo_soak MINUTES | prismo_soak restarts COUNT\n");
    return 2;
  }
  return restarts ? Restart(static_cast<uint32_t>(amount)) : Soak(amount);
}

#include "platform/cpu_caches.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace prismo::platform {
namespace {

// What the kernel tells of a cache of the first processor; empty where it tells nothing.
struct CacheFact {
  std::array<char, 16> text{};

  CacheFact(int index, const char* name) {
    std::array<char, 64> path;
    std::snprintf(path.data(), path.size(), "/sys/devices/system/cpu/cpu0/cache/index%d/%s", index, name);
    const int file = open(path.data(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return;
    if (read(file, text.data(), text.size() - 1) < 0) text[0] = '\0';
    close(file);
  }

  long Number() const { return std::strtol(text.data(), nullptr, 10); }
};

long FromSystemConfiguration(int level) {
  switch (level) {
    case 1:
      return sysconf(_SC_LEVEL1_DCACHE_SIZE);
    case 2:
      return sysconf(_SC_LEVEL2_CACHE_SIZE);
    case 3:
      return sysconf(_SC_LEVEL3_CACHE_SIZE);
    case 4:
      return sysconf(_SC_LEVEL4_CACHE_SIZE);
    default:
      return 0;
  }
}

}  // namespace

// The C library adds up the third-level caches of a package that has several, of which a processor fills only
// its own (384 MB where it was 32): the kernel is asked first.
size_t CacheBytes(int level) {
  for (int index = 0;; ++index) {
    const long found = CacheFact(index, "level").Number();
    if (found == 0) break;
    if (found != level || CacheFact(index, "type").text[0] == 'I') continue;
    const long kilobytes = CacheFact(index, "size").Number();
    if (kilobytes > 0) return static_cast<size_t>(kilobytes) << 10;
  }
  const long bytes = FromSystemConfiguration(level);
  return bytes > 0 ? static_cast<size_t>(bytes) : 0;
}

}  // namespace prismo::platform

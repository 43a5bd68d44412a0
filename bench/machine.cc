#include "machine.h"

#include <sys/utsname.h>

#include <cstdlib>
#include <fstream>
#include <thread>

#include "memory_limit.h"
#include "platform/cpu_caches.h"

namespace prismo::bench {
namespace {

std::string ProcessorName() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    const size_t colon = line.find(": ");
    if (line.starts_with("model name") && colon != std::string::npos) return line.substr(colon + 2);
  }
  utsname system{};
  uname(&system);
  return system.machine;
}

std::string Bytes(size_t bytes) {
  if (bytes == 0) return "unknown";
  return bytes < 1 << 20 ? std::to_string(bytes >> 10) + " KB" : std::to_string(bytes >> 20) + " MB";
}

bool IsVirtual() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.starts_with("flags") && line.find(" hypervisor") != std::string::npos) return true;
  }
  return false;
}

}  // namespace

std::vector<std::string> DescribeMachine() {
  const char* limit = std::getenv("PRISMO_SIMD");
  return {
      "processor: " + ProcessorName() + ", " + std::to_string(std::thread::hardware_concurrency()) +
          " threads" + (IsVirtual() ? ", in a virtual machine" : ""),
      "caches: L1 " + Bytes(platform::CacheBytes(1)) + ", L2 " + Bytes(platform::CacheBytes(2)) + ", L3 " +
          Bytes(platform::CacheBytes(3)),
      "instruction set: " +
          (limit ? "at most " + std::string(limit) + " (PRISMO_SIMD), the limits use "
                 : "the processor's best, ") +
          WidestVectors(),
  };
}

}  // namespace prismo::bench

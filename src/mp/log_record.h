// A record of the diagnostic log, in memory and in saved logs alike.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace prismo::mp {

struct LogRecord {
  uint64_t stamp = 0;      // platform::TickCount()
  uint32_t function = 0;   // LogFunction
  uint32_t level = 0;      // LogLevel
  uint32_t thread_id = 0;  // of the writer
  uint32_t work_id = 0;    // 0: concerns no work
  uint32_t kind = 0;       // LogKind
  std::array<uint32_t, 8> arguments{};
  uint32_t unused = 0;
};

static_assert(sizeof(LogRecord) == 64 && offsetof(LogRecord, arguments) == 28);
static_assert(std::endian::native == std::endian::little, "saved logs are little-endian");

}  // namespace prismo::mp

// Saved logs: a header of 48 bytes, then the records.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "mp/log_record.h"
#include "platform/local_time.h"

namespace prismo::mp {

struct LogFileHeader {
  std::array<uint8_t, 3> version{};
  platform::LocalTime date;
  uint8_t cores = 0;
  int64_t frequency = 0;    // stamps per second
  uint64_t base_stamp = 0;  // what the text counts the records' stamps from
  uint32_t record_count = 0;
};

using LogFileHeaderBytes = std::array<uint8_t, 48>;

LogFileHeaderBytes EncodeLogHeader(const LogFileHeader& header);
LogFileHeader DecodeLogHeader(const LogFileHeaderBytes& bytes);

// Saves the records as a new file in the folder, named after the present time and the process. Whatever
// fails leaves no file behind.
void SaveLog(const std::string& folder, uint64_t base_stamp, const std::vector<LogRecord>& records);

}  // namespace prismo::mp

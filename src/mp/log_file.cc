#include "mp/log_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "platform/new_file.h"
#include "platform/process.h"
#include "platform/processors.h"
#include "platform/tick_counter.h"

namespace prismo::mp {
namespace {

constexpr std::string_view kMark = "PRISMOLG";
constexpr std::array<uint8_t, 3> kVersion = {1, 0, 0};

constexpr size_t kVersionOffset = 8;
constexpr size_t kYearOffset = 20;
constexpr size_t kTimeOffset = 22;  // month, day, hour, minute, second, cores: a byte each
constexpr size_t kFrequencyOffset = 28;
constexpr size_t kBaseStampOffset = 36;
constexpr size_t kRecordCountOffset = 44;

// Saves of one process within a second are numbered.
constexpr int kMaxSavesPerSecond = 1000;

template <class Value>
void Put(LogFileHeaderBytes& bytes, size_t offset, const Value& value) {
  std::memcpy(&bytes[offset], &value, sizeof(value));
}

template <class Value>
void Get(const LogFileHeaderBytes& bytes, size_t offset, Value& value) {
  std::memcpy(&value, &bytes[offset], sizeof(value));
}

// Ends before the number of the save.
std::string FileStem(const platform::LocalTime& time) {
  std::array<char, 64> stem{};
  std::snprintf(stem.data(), stem.size(), "PrismoUtl-%04u%02u%02u-%02u%02u%02u-%u-", unsigned{time.year},
                unsigned{time.month}, unsigned{time.day}, unsigned{time.hour}, unsigned{time.minute},
                unsigned{time.second}, unsigned{platform::ProcessId()});
  return stem.data();
}

bool WriteAndClose(std::FILE* file, const LogFileHeaderBytes& header, const std::vector<LogRecord>& records) {
  const bool written = std::fwrite(header.data(), 1, header.size(), file) == header.size() &&
                       std::fwrite(records.data(), sizeof(LogRecord), records.size(), file) == records.size();
  return std::fclose(file) == 0 && written;
}

}  // namespace

LogFileHeaderBytes EncodeLogHeader(const LogFileHeader& header) {
  const platform::LocalTime& date = header.date;
  LogFileHeaderBytes bytes{};
  std::copy(kMark.begin(), kMark.end(), bytes.begin());
  Put(bytes, kVersionOffset, header.version);
  Put(bytes, kYearOffset, date.year);
  Put(bytes, kTimeOffset,
      std::array<uint8_t, 6>{date.month, date.day, date.hour, date.minute, date.second, header.cores});
  Put(bytes, kFrequencyOffset, header.frequency);
  Put(bytes, kBaseStampOffset, header.base_stamp);
  Put(bytes, kRecordCountOffset, header.record_count);
  return bytes;
}

LogFileHeader DecodeLogHeader(const LogFileHeaderBytes& bytes) {
  LogFileHeader header;
  std::array<uint8_t, 6> time{};
  Get(bytes, kVersionOffset, header.version);
  Get(bytes, kYearOffset, header.date.year);
  Get(bytes, kTimeOffset, time);
  Get(bytes, kFrequencyOffset, header.frequency);
  Get(bytes, kBaseStampOffset, header.base_stamp);
  Get(bytes, kRecordCountOffset, header.record_count);
  header.date.month = time[0];
  header.date.day = time[1];
  header.date.hour = time[2];
  header.date.minute = time[3];
  header.date.second = time[4];
  header.cores = time[5];
  return header;
}

void SaveLog(const std::string& folder, uint64_t base_stamp, const std::vector<LogRecord>& records) {
  const platform::LocalTime now = platform::LocalTimeNow();
  const LogFileHeaderBytes header =
      EncodeLogHeader({.version = kVersion,
                       .date = now,
                       .cores = static_cast<uint8_t>(std::min(platform::ProcessorCount(), 255)),
                       .frequency = platform::TickFrequency(),
                       .base_stamp = base_stamp,
                       .record_count = static_cast<uint32_t>(records.size())});
  const std::string stem = folder + FileStem(now);
  for (int number = 1; number <= kMaxSavesPerSecond; ++number) {
    const std::string path = stem + std::to_string(number) + ".pxu";
    if (std::FILE* file = platform::CreateNewFile(path)) {
      if (!WriteAndClose(file, header, records)) std::remove(path.c_str());
      return;
    }
    if (errno != EEXIST) return;
  }
}

}  // namespace prismo::mp

#include "mp/log_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>

#include "core/status.h"
#include "mp/log.h"
#include "mp/log_tables.h"
#include "platform/folders.h"

namespace prismo::mp {
namespace {

// Numbers of up to eleven characters leave every text well below the buffer's size.
template <class... Values>
std::string Format(const char* format, Values... values) {
  std::array<char, 512> buffer{};
  std::snprintf(buffer.data(), buffer.size(), format, values...);
  return buffer.data();
}

}  // namespace

std::string LogHeaderText(const LogFileHeader& header) {
  const platform::LocalTime& date = header.date;
  const auto& version = header.version;
  return "\n\n=============================================================\n\n" +
         Format("Log date: %d/%d/%d %d:%d:%d\n\n", int{date.year}, int{date.month}, int{date.day},
                int{date.hour}, int{date.minute}, int{date.second}) +
         Format("Performance frequency: %lld\n\n", static_cast<long long>(header.frequency)) +
         Format("CPU core number: %d\r\n", int{header.cores}) +
         Format("Log data version: Ver%d.%d.%d\r\n", int{version[0]}, int{version[1]}, int{version[2]});
}

std::string LogLine(const LogRecord& record, uint64_t base_stamp) {
  const char* function = LogFunctionName(record.function);
  if (!*function) return {};
  const auto& a = record.arguments;
  return Format("%08u ThreadID:%06x WorkID:%04u %-28s ", static_cast<uint32_t>(record.stamp - base_stamp),
                record.thread_id, record.work_id, function) +
         Format(LogMessageFormat(record), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
}

void RenderLog(std::istream& log, std::ostream& text, uint32_t level) {
  LogFileHeaderBytes bytes{};
  log.read(reinterpret_cast<char*>(bytes.data()), bytes.size());
  const LogFileHeader header = DecodeLogHeader(bytes);
  text << LogHeaderText(header);

  // One by one: the header may promise more than there is memory for.
  LogRecord record;
  for (uint32_t left = header.record_count; left > 0; --left) {
    if (!log.read(reinterpret_cast<char*>(&record), sizeof(record))) return;
    if (record.level >= level) text << LogLine(record, header.base_stamp);
  }
}

Status ConvertLog(const char* log_path, const char* text_path, uint32_t level) {
  return NoThrow(Status::kFileReadError, [&] {
    // A folder would open as a stream here and there, and then not read.
    if (!log_path || !text_path || platform::IsFolder(log_path)) return Status::kFileOpenError;
    std::ifstream log(log_path, std::ios::binary);
    if (!log) return Status::kFileOpenError;
    std::ofstream text(text_path);
    if (!text) return Status::kFileOpenError;
    log.exceptions(std::ios::badbit);
    text.exceptions(std::ios::badbit | std::ios::failbit);
    RenderLog(log, text, level);
    text.close();
    return Status::kSuccess;
  });
}

}  // namespace prismo::mp

// The vocabulary of the log's text form: names of functions, and the message of an event. The texts are a
// format that other programs read, odd spellings included.
#pragma once

#include <cstdint>

#include "mp/log_record.h"

namespace prismo::mp {

inline constexpr uint32_t kLogFunctionCount = 341;

// Empty for the unused indices at the end of the table and for those beyond it.
const char* LogFunctionName(uint32_t function);

// The printf format of the record's message, for 32-bit integers: the record's arguments in order.
const char* LogMessageFormat(const LogRecord& record);

}  // namespace prismo::mp

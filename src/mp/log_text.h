// Saved logs as text, a line for a record.
#pragma once

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>

#include "mp/log_file.h"

namespace prismo::mp {

std::string LogHeaderText(const LogFileHeader& header);

// Empty for a record of no known function.
std::string LogLine(const LogRecord& record, uint64_t base_stamp);

// Renders the header and the whole records that the log has, up to the number in its header, with at least
// the level. What a short header lacks counts as zero. Failures are those of the streams.
void RenderLog(std::istream& log, std::ostream& text, uint32_t level);

}  // namespace prismo::mp

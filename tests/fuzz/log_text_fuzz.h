// One run of the log converter on arbitrary bytes. The first byte is the level asked for, the rest the log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "mp/log_text.h"

namespace prismo::test {

inline void FuzzLogText(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const uint32_t level = size == 0 ? 0 : data[0];
  std::istringstream log(bytes.substr(size == 0 ? 0 : 1));
  std::ostringstream stream;
  mp::RenderLog(log, stream, level);

  const std::string text = stream.str();
  if (!text.starts_with("\n\n====") || text.back() != '\n') std::abort();
  if (text.find('\0') != std::string::npos) std::abort();
  if (text.size() > 512 + size / 64 * 512) std::abort();
}

}  // namespace prismo::test

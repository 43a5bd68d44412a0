// One reading of arbitrary bytes as the configuration file.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "mp/config_file.h"

namespace prismo::test {

inline void FuzzConfigFile(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  std::istringstream file(bytes);
  mp::LogConfiguration configuration{.folder = "before/"};
  const bool names_folder = mp::ReadConfiguration(file, configuration);

  const std::string& folder = configuration.folder;
  if (!names_folder && folder != "before/") std::abort();
  if (folder.size() > 260 || folder.empty()) std::abort();
  if (folder.find_first_of("\"\r\n") != std::string::npos) std::abort();
  if (configuration.level > 4) std::abort();
  if (!std::has_single_bit(configuration.records) || configuration.records < 1024 ||
      configuration.records > 524288) {
    std::abort();
  }
  const bool named = bytes.find("PrismoUtl") != std::string::npos;
  if (!named && (names_folder || configuration.termination_log || configuration.save_on_error)) std::abort();
}

}  // namespace prismo::test

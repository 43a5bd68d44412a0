// PrismoUtl.cfg: a line of text that steers the diagnostic log.
#pragma once

#include <cstdint>
#include <istream>
#include <string>

namespace prismo::mp {

struct LogConfiguration {
  std::string folder{};  // of saved logs, with a separator at its end; empty: there is none
  bool save_on_error = false;
  bool termination_log = false;
  uint32_t level = 0;
  uint32_t records = 1024;  // wanted in the ring
};

// Applies the first line that names the library. True if it also names a folder.
bool ReadConfiguration(std::istream& file, LogConfiguration& configuration);

// The file beside the executable, else the one of the kit that `kit_folder` names; empty if there is no such
// folder, which may be null. The kit's file need not exist.
std::string FindConfigurationFile(const std::string& executable, const char* kit_folder);

// The defaults and what the file says, with the log's folder created. Whatever fails leaves the settings as
// they are by then.
LogConfiguration LoadConfiguration() noexcept;

}  // namespace prismo::mp

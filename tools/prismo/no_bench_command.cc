#include "commands.h"

namespace prismo::tool {

// Measures with what only POSIX systems have.
void AddBenchCommand(CLI::App&) {}

}  // namespace prismo::tool

// Where the program comes from.
#pragma once

#include <string>

namespace prismo::platform {

// The full path of the process's executable; empty if the system does not tell.
std::string ExecutablePath();

}  // namespace prismo::platform

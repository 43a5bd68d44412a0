#pragma once

namespace prismo::tool {

// The whole command; the exit code. Talks to standard output and standard error.
int Run(int argc, const char* const* argv);

}  // namespace prismo::tool

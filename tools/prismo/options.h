// Options that several commands share.
#pragma once

#include <string>
#include <vector>

#include "raw_input.h"

namespace CLI {
class App;
}

namespace prismo::tool {

// Exits of the program.
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

struct DumpOptions {
  std::string size;
  std::string format;

  void AddTo(CLI::App& command);
  DumpLayout Layout() const;
};

}  // namespace prismo::tool

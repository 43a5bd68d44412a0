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

// Makes an empty value of any option or argument wrong usage. To be called with all commands there.
void RefuseEmptyValues(CLI::App& app);

void AddGammaOption(CLI::App& command, double& gamma, const std::string& description);

struct DumpOptions {
  std::string size;
  std::string format;

  void AddTo(CLI::App& command);
  DumpLayout Layout() const;
};

}  // namespace prismo::tool

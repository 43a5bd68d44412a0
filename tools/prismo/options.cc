#include "options.h"

#include <CLI/CLI.hpp>
#include <cstdlib>

#include "error.h"

namespace prismo::tool {

void RefuseEmptyValues(CLI::App& app) {
  const auto complaint = [](const std::string& text) { return std::string(text.empty() ? "is empty" : ""); };
  for (CLI::App* command : app.get_subcommands({})) {
    for (CLI::Option* option : command->get_options()) option->check(complaint);
  }
}

void AddGammaOption(CLI::App& command, double& gamma, const std::string& description) {
  // CLI::Range lets NaN pass.
  const auto complaint = [](const std::string& text) {
    constexpr double kLeast = 0.1, kMost = 10;
    const double value = std::strtod(text.c_str(), nullptr);
    if (value >= kLeast && value <= kMost) return std::string();
    return Text(text, " is not between ", kLeast, " and ", kMost);
  };
  command.add_option("--gamma", gamma, description)->check(complaint);
}

void DumpOptions::AddTo(CLI::App& command) {
  command.add_option("--size", size, "Size of a headerless dump, for example 1920x1080");
  command.add_option("--format", format, "Pixel format of a headerless dump, for example BayerRG12");
}

DumpLayout DumpOptions::Layout() const {
  DumpLayout layout;
  if (!size.empty()) layout.size = ParseSize(size);
  if (!format.empty()) layout.format = &FormatByName(format);
  return layout;
}

}  // namespace prismo::tool

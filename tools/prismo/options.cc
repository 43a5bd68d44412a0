#include "options.h"

#include <CLI/CLI.hpp>

namespace prismo::tool {

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

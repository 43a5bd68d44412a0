#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>

#include "PrismoUtl.h"
#include "commands.h"
#include "formats.h"

namespace prismo::tool {
namespace {

void PrintFormats() {
  const auto row = [](const auto& name, const auto& code, const auto& bits, const auto& depth,
                      const auto& kind, const auto& rule) {
    std::cout << std::left << std::setw(17) << name << std::setw(12) << code << std::right << std::setw(10)
              << bits << std::setw(7) << depth << "  " << std::left << std::setw(8) << kind << rule << '\n';
  };
  row("name", "code", "bits/pixel", "depth", "class", "bytes of a row of W pixels");
  for (const Format& format : AllFormats()) {
    std::ostringstream code;
    code << "0x" << std::hex << std::uppercase << std::setfill('0') << std::setw(8) << format.code;
    row(format.name, code.str(), unsigned{BitPerPixel(format.code)}, SampleDepth(format),
        ClassName(format.kind), RowRule(format));
  }
}

}  // namespace

void AddFormatsCommand(CLI::App& app) {
  app.add_subcommand("formats", "List the pixel formats")->callback(PrintFormats);
}

}  // namespace prismo::tool

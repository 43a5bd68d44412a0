#include "application.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "commands.h"
#include "error.h"
#include "options.h"

namespace prismo::tool {

int Run(int argc, const char* const* argv) {
  CLI::App app("Raw frames of industrial cameras: describe, convert, compare, make.", "prismo");
  app.set_version_flag("--version", "prismo " PRISMO_VERSION);
  app.require_subcommand(0, 1);
  AddFormatsCommand(app);
  AddInfoCommand(app);
  AddConvertCommand(app);
  AddMirrorCommand(app);
  AddMosaicCommand(app);
  AddCompareCommand(app);
  AddProbeCommand(app);
  AddLogCommand(app);
  AddDemoCommand(app);
  AddBenchCommand(app);
  RefuseEmptyValues(app);
  // Only in the end: words that are no command are more worth a complaint than a missing one.
  app.callback([&app] {
    if (app.get_subcommands().empty()) throw CLI::RequiredError("A command");
  });
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    app.exit(help);
  } catch (const CLI::Error& error) {
    std::cerr << "prismo: " << error.what() << " (prismo --help, prismo COMMAND --help)\n";
    return kExitUsage;
  } catch (const std::exception& error) {
    std::cerr << "prismo: " << error.what() << '\n';
    return kExitFailure;
  }
  if (!std::cout.flush()) {
    std::cerr << "prismo: standard output: writing failed\n";
    return kExitFailure;
  }
  return 0;
}

}  // namespace prismo::tool

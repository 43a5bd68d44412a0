// One function per command; each adds it to the application. A command that fails throws Error.
#pragma once

namespace CLI {
class App;
}

namespace prismo::tool {

void AddFormatsCommand(CLI::App& app);
void AddInfoCommand(CLI::App& app);
void AddConvertCommand(CLI::App& app);
void AddMirrorCommand(CLI::App& app);
void AddMosaicCommand(CLI::App& app);
void AddCompareCommand(CLI::App& app);
void AddProbeCommand(CLI::App& app);
void AddLogCommand(CLI::App& app);
void AddDemoCommand(CLI::App& app);
void AddBenchCommand(CLI::App& app);  // not on Windows

}  // namespace prismo::tool

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "bench/machine.h"
#include "bench/results.h"
#include "bench/run.h"
#include "commands.h"
#include "error.h"
#include "output_file.h"
#include "scratch_file.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

void RunBench(bench::Options options) {
  const std::vector<bench::Row> rows = bench::SelectedRows(options);
  if (options.list) return bench::PrintNames(rows);

  ProtectInputs({options.baseline});
  bench::Report baseline;
  if (!options.baseline.empty()) baseline = bench::ReadJson(options.baseline);
  std::optional<OutputFile> json;
  if (!options.json.empty()) json.emplace(options.json);
  const ScratchFile file(options.folder, fs::perms::owner_read | fs::perms::owner_write);
  options.conditions.file = file.PathToOpen();

  const bench::Report report = bench::MeasureAll(rows, options.conditions, bench::DescribeMachine());
  if (json) {
    bench::WriteJson(report, json->scratch());
    json->Commit();
  }
  const int slower =
      options.baseline.empty() ? 0 : bench::CompareWith(baseline, options.baseline, report.results);
  if (slower > 0) throw FileError(options.baseline, "rows that were faster when it was written: ", slower);
  if (report.results.size() < rows.size())
    throw Error("rows that failed: ", rows.size() - report.results.size());
}

}  // namespace

void AddBenchCommand(CLI::App& app) {
  auto options = std::make_shared<bench::Options>();
  CLI::App* command = app.add_subcommand("bench", "Measure the conversions against the speed of the memory");
  bench::AddOptions(*command, *options);
  command->callback([options] { RunBench(*options); });
}

}  // namespace prismo::tool

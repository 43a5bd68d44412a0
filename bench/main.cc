// prismo_bench: how fast the conversions are, against what the memory allows and against other libraries.
#include <stdlib.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "document.h"
#include "goals.h"
#include "machine.h"
#include "measure.h"
#include "peers.h"
#include "report.h"
#include "results.h"
#include "run.h"

namespace prismo::bench {
namespace {

class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& folder) : path_(folder + "/prismo_bench-XXXXXX") {
    const int file = mkstemp(path_.data());
    if (file < 0) throw std::runtime_error("cannot make a file in " + folder);
    close(file);
  }
  ~TemporaryFile() { unlink(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

struct OwnOptions {
  bool verify = false;
  bool goals = false;
  std::vector<std::string> from;
  std::string markdown;
};

// A peer that does other work than ours shows here: rounding and video range make small differences.
int Verify(const std::vector<Row>& rows, const Conditions& conditions) {
  constexpr double kOtherWork = 12;
  int suspects = 0;
  for (const PeerLibrary& library : PeerLibraries()) {
    for (const std::string_view name : library.conversions) {
      if (std::ranges::any_of(Conversions(), [&](const Conversion& ours) { return ours.name == name; }))
        continue;
      ++suspects;
      std::printf("%s has %s, we have not\n", library.name, std::string(name).c_str());
    }
  }
  std::printf("Mean difference of a byte between the peers' results and ours, of 255:\n");
  for (const Row& row : rows) {
    if (row.workers > 0 || row.conversion->target.format == 0) continue;
    for (const Difference& difference : ComparePeers(row, conditions)) {
      const bool other_work = difference.mean > kOtherWork;
      suspects += other_work;
      std::printf("%-46s %-8s %6.2f%s\n", row.Name().c_str(), difference.peer.c_str(), difference.mean,
                  other_work ? "  NOT THE SAME WORK" : "");
    }
  }
  return suspects > 0 ? 1 : 0;
}

Report ReadAll(const std::vector<std::string>& paths) {
  Report report;
  for (const std::string& path : paths) {
    Report part = ReadJson(path);
    report.machine = std::move(part.machine);
    for (Result& result : part.results) report.results.push_back(std::move(result));
  }
  PrintHead(Peers::kSome);
  for (const Result& result : report.results) PrintRow(result, Peers::kSome);
  return report;
}

int Run(Options options, const OwnOptions& own) {
  const std::vector<Row> rows = SelectedRows(options);
  if (options.list) {
    PrintNames(rows);
    return 0;
  }
  const TemporaryFile file(options.folder);
  options.conditions.file = file.Path();
  options.conditions.peers = PeerLibraries();
  if (own.verify) return Verify(rows, options.conditions);

  Report baseline;
  if (!options.baseline.empty()) baseline = ReadJson(options.baseline);
  Report report;
  bool failed = false;
  if (own.from.empty()) {
    std::vector<std::string> machine = DescribeMachine();
    machine.push_back("peers: " + DescribePeers());
    report = MeasureAll(rows, options.conditions, std::move(machine));
    failed = report.results.size() < rows.size();
  } else {
    report = ReadAll(own.from);
  }
  if (!options.json.empty()) WriteJson(report, options.json);
  if (!own.markdown.empty()) WriteMarkdown(report, own.markdown);
  if (own.goals) failed |= ReportGoals(report) > 0;
  if (!options.baseline.empty()) failed |= CompareWith(baseline, options.baseline, report.results) > 0;
  return failed ? 1 : 0;
}

int Main(int argc, char** argv) {
  Options options;
  OwnOptions own;
  CLI::App app("Measures the conversions of PrismoUtl against the limits of the memory and other libraries.");
  AddOptions(app, options);
  app.get_option("--compare")->expected(0, 1)->default_str(PRISMO_BENCH_BASELINE);
  app.add_option("--markdown", own.markdown, "Put the results into this document, between its markers");
  app.add_option("--from", own.from, "Report the results of these --json files instead of measuring");
  app.add_flag("--goals", own.goals,
               "Name the rows that miss their goals, by the worst of the runs reported");
  app.add_flag("--verify", own.verify, "Only check that the peers do the same work");
  CLI11_PARSE(app, argc, argv);
  return Run(std::move(options), own);
}

}  // namespace
}  // namespace prismo::bench

int main(int argc, char** argv) {
  try {
    return prismo::bench::Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "prismo_bench: %s\n", error.what());
    return 2;
  }
}

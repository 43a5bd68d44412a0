// A run of the benchmark, as both programs offer it.
#pragma once

#include <string>
#include <vector>

#include "measure.h"
#include "results.h"

namespace CLI {
class App;
}

namespace prismo::bench {

struct Options {
  std::string filter;
  std::vector<std::string> sizes;
  bool all = false;
  bool list = false;
  std::string folder, json, baseline;
  Conditions conditions = {};
};

void AddOptions(CLI::App& app, Options& options);

// Throws std::invalid_argument when there are none.
std::vector<Row> SelectedRows(const Options& options);

void PrintNames(const std::vector<Row>& rows);

// Prints the facts about the machine, the method and the results. Leaves out rows that fail, and says so.
Report MeasureAll(const std::vector<Row>& rows, const Conditions& conditions,
                  std::vector<std::string> machine);

}  // namespace prismo::bench

// Rows of the result table: a conversion, the threads that run it, a size.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "conversions.h"
#include "peers.h"
#include "race.h"
#include "results.h"

namespace prismo::bench {

struct Row {
  const Conversion* conversion;
  int workers;  // of the pool; 0: the caller's thread
  Size size;    // as asked

  std::string Name() const;
};

std::vector<Row> RowsOf(std::span<const Size> sizes);

struct Conditions {
  Plan plan{9, 0.002};
  size_t misalignment = 0;
  std::string file = {};                    // to write and to read, by rows that do
  std::span<const PeerLibrary> peers = {};  // to compare with
};

// Throws std::runtime_error when the conversion fails.
Result Measure(const Row& row, const Conditions& conditions);

// How far the results of each peer are from ours: the mean difference of a byte.
struct Difference {
  std::string peer;
  double mean;
};
std::vector<Difference> ComparePeers(const Row& row, const Conditions& conditions);

}  // namespace prismo::bench

// Which rows a work on the pool converts, and whether it can ever be counted as finished.
#pragma once

#include <cstdint>
#include <vector>

#include "reference/pictures.h"

namespace prismo::reference {

struct RowSplit {
  std::vector<Rows> blocks;  // the blocks that hold rows, in the order in which they are handed out
  bool finishes = false;     // false: a thread that draws an empty block leaves without signing off

  uint32_t Status() const { return finishes ? 0 : 18; }
  // The blocks follow one another, so their union is one range.
  Rows Covered() const;
};

// Rows first to last, cut for this many running threads. Type 0: equal blocks; 1: shrinking; 2: shrinking,
// even.
RowSplit SplitRows(int32_t first, int32_t last, int32_t threads, int32_t type, int32_t block_rows = 0);

}  // namespace prismo::reference

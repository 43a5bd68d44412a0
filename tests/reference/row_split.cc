#include "reference/row_split.h"

#include <algorithm>

namespace prismo::reference {
namespace {

using List = std::vector<int32_t>;

void Append(List& list, int32_t blocks, int32_t rows) {
  if (blocks > 0) list.insert(list.end(), static_cast<size_t>(blocks), rows);
}

List Equal(int32_t height, int32_t threads, int32_t block_rows) {
  const int32_t rows = block_rows < 1 ? std::max(1, height / threads) : block_rows;
  List list;
  Append(list, height / rows, rows);
  if (!list.empty() && height % rows > 0) list.back() += height % rows;
  return list;
}

// Every block holds a multiple of `unit` rows: 1 for single rows, 2 for pairs of rows.
List Shrinking(int32_t height, int32_t threads, int32_t unit) {
  List list;
  int32_t rest = height;
  for (const int32_t part : {8, 4}) {
    const int32_t rows = height / (part * unit * threads) * unit;
    if (rows > 0) {
      Append(list, threads, rows);
      rest -= rows * threads;
    }
  }
  const int32_t rows = rest / (unit * threads) * unit;
  const int32_t longer = (rest - rows * threads) / unit;
  if (longer >= 1) {
    Append(list, threads - longer, rows);
    Append(list, longer, rows + unit);
  } else {
    Append(list, threads, rows);
  }
  return list;
}

}  // namespace

Rows RowSplit::Covered() const {
  if (blocks.empty()) return {0, 0};
  return {blocks.front().first, blocks.back().first + blocks.back().count - blocks.front().first};
}

RowSplit SplitRows(int32_t first, int32_t last, int32_t threads, int32_t type, int32_t block_rows) {
  const int32_t height = last - first + 1;
  List list;
  if (type == 0) list = Equal(height, threads, block_rows);
  if (type == 1) list = Shrinking(height, threads, 1);
  if (type == 2) list = Shrinking(height, threads, 2);

  RowSplit split;
  split.finishes = !list.empty();
  int32_t next = first;
  for (auto rows = list.rbegin(); rows != list.rend(); ++rows) {
    if (*rows < 1) {
      split.finishes = false;
      continue;
    }
    split.blocks.push_back({next, *rows});
    next += *rows;
  }
  return split;
}

}  // namespace prismo::reference

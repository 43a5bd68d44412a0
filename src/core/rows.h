// The unit of work is a range of rows: the caller's thread converts the range of all rows, a worker its
// block.
#pragma once

#include <cstdint>

namespace prismo {

struct RowRange {
  int32_t first;
  int32_t count;
};

}  // namespace prismo

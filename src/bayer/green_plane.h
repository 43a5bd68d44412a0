// Greens of the red and blue sites on their way from a first work on the pool to a second. The picture gets
// them with the other colours; only when a work fails, they have to be there without.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "bayer/acpi_rows.h"

namespace prismo {

class GreenPlane {
 public:
  // No plane at all.
  GreenPlane() = default;

  // Sites of the given rows, for colours of the given columns.
  GreenPlane(ColumnRange columns, uint32_t first_row, uint32_t rows)
      : first_row_(first_row),
        rows_(rows),
        first_column_(FirstColumn(columns)),
        pitch_((columns.end - first_column_) / 2 + kSplitMargin) {}

  // What Use wants: a state and sites for each row.
  size_t Bytes() const { return std::max<size_t>(rows_ * (1 + pitch_), 1); }
  void Use(void* memory) {
    memory_ = static_cast<uint8_t*>(memory);
    std::memset(memory_, kOpen, rows_);
  }

  explicit operator bool() const { return memory_ != nullptr; }

  // Site x of the row is [x / 2]. Up to kSplitMargin sites behind the columns may be read and written.
  uint8_t* Row(uint32_t y) const { return memory_ + rows_ + pitch_ * (y - first_row_) - first_column_ / 2; }

  size_t Pitch() const { return pitch_; }

  // The first column whose sites are there: an even one, three columns before the first at least, and no more
  // than a block.
  static uint32_t FirstColumn(ColumnRange columns) {
    return columns.begin < kBlockColumns ? 0 : (columns.begin - (kBlockColumns - 1)) & ~1u;
  }

  // A row's greens are complete. True if the submitter had given the row up: its worker has to put them
  // into the picture.
  bool Complete(uint32_t y) const { return Set(y, kComplete) == kGivenUp; }

  // A worker comes for the row's colours. False if the submitter had given it up.
  bool Take(uint32_t y) const { return Set(y, kTaken) != kGivenUp; }

  // True if the row's greens are complete and nobody will come for its colours: the submitter has to put
  // them into the picture.
  bool GiveUp(uint32_t y) const { return Set(y, kGivenUp) == kComplete; }

 private:
  enum State : uint8_t { kOpen, kComplete, kTaken, kGivenUp };

  State Set(uint32_t y, State state) const {
    return State{std::atomic_ref(memory_[y - first_row_]).exchange(state, std::memory_order_acq_rel)};
  }

  uint8_t* memory_ = nullptr;
  uint32_t first_row_ = 0;
  uint32_t rows_ = 0;
  uint32_t first_column_ = 0;
  size_t pitch_ = 0;
};

}  // namespace prismo

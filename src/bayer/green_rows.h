// What has become of the rows of an adaptive demosaic on the pool, whose greens belong to a first work and
// whose other colours to a second. Pixels are written whole, by the second one, which makes the greens on the
// way as the caller's thread does: to write a picture twice takes longer than to compute it. Only when a work
// fails, the rows that the first one had reached have to get their greens alone, from whoever comes later:
// the worker or the submitter.
#pragma once

#include <atomic>
#include <cstdint>

namespace prismo {

class GreenRows {
 public:
  // None at all.
  GreenRows() = default;

  // From a row on, with a zero byte for each in memory that lives as long as the works.
  GreenRows(uint32_t first_row, uint8_t* states) : states_(states), first_row_(first_row) {}

  explicit operator bool() const { return states_ != nullptr; }

  // The first work has reached the row. True if the submitter had given it up: the worker has to put its
  // greens into the picture.
  bool Reach(uint32_t y) const { return Set(y, kReached) == kGivenUp; }

  // A worker comes for the row's colours. False if the submitter had given it up.
  bool Take(uint32_t y) const { return Set(y, kTaken) != kGivenUp; }

  // True if the first work has reached the row and nobody will come for its colours: the submitter has to put
  // its greens into the picture.
  bool GiveUp(uint32_t y) const { return Set(y, kGivenUp) == kReached; }

 private:
  enum State : uint8_t { kOpen, kReached, kTaken, kGivenUp };

  State Set(uint32_t y, State state) const {
    return State{std::atomic_ref(states_[y - first_row_]).exchange(state, std::memory_order_acq_rel)};
  }

  uint8_t* states_ = nullptr;
  uint32_t first_row_ = 0;
};

}  // namespace prismo

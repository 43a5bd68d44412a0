#pragma once

#include <cstdint>

namespace prismo::platform {

// The priority of the thread that makes this object, on the scale -2 (lowest), 0 (what the thread was made
// with) to 2 (highest) and beyond. Other threads are never touched.
class ThreadPriority {
 public:
  ThreadPriority() noexcept;

  // As far as the system lets us.
  void Apply(int32_t priority) noexcept;

 private:
  int32_t base_;  // the system's own figure for 0
};

}  // namespace prismo::platform

// Memory that runs out where a test wants it to.
#pragma once

#include <cstdint>

namespace prismo::mp {

// While it exists, the `which`th allocation from now on by the thread that made it (0: the next one) fails.
class FailingNew {
 public:
  explicit FailingNew(int32_t which);
  ~FailingNew();
  bool Failed() const;
};

}  // namespace prismo::mp

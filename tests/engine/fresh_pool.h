// For tests of the pool that the exports share.
#pragma once

#include <gtest/gtest.h>

#include "PrismoUtl.h"

namespace prismo::mp {

// No pool when a test begins, and none when it ends.
class FreshPool : public testing::Test {
 protected:
  FreshPool() { TerminateMPThreads(); }
  ~FreshPool() override { TerminateMPThreads(); }
};

}  // namespace prismo::mp

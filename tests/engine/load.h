// A mixed load on a pool, whose every answer is checked: for the stress test and the soak program.
#pragma once

#include <cstdint>
#include <string>

#include "PrismoUtl.h"
#include "engine/pool_tools.h"

namespace prismo::mp {

// The pool under load: the one behind the exports, or one of a test's own.
class LoadTarget {
 public:
  virtual ~LoadTarget() = default;
  virtual uint32_t Exec(const Body& body, uint32_t rows, uint32_t type, uint32_t block_rows) = 0;
  virtual MPWork* Start(const Body& body, uint32_t rows, uint32_t type, uint32_t block_rows) = 0;
  virtual uint32_t Wait(MPWork* work) = 0;
  virtual void SetTimeout(uint32_t timeout_ms) = 0;
  virtual void SetCount(int32_t count) = 0;
  virtual void SetPriority(int32_t priority) = 0;
  virtual void Terminate() = 0;  // the next call makes a new pool
};

class SharedPoolTarget : public LoadTarget {
 public:
  uint32_t Exec(const Body& body, uint32_t rows, uint32_t type, uint32_t block_rows) override;
  MPWork* Start(const Body& body, uint32_t rows, uint32_t type, uint32_t block_rows) override;
  uint32_t Wait(MPWork* work) override { return WaitWorkDone(work); }
  void SetTimeout(uint32_t timeout_ms) override { SetMPTimeout_msec(timeout_ms); }
  void SetCount(int32_t count) override { SetMPCount(count); }
  void SetPriority(int32_t priority) override { SetMPThreadPriority(priority); }
  void Terminate() override { TerminateMPThreads(); }
};

struct LoadCounts {
  uint64_t done = 0;
  uint64_t timed_out = 0;
  uint64_t failed = 0;
  std::string error;  // the first wrong answer; empty: none
};

// Several submitters run works of random sizes, splits and behaviours, some of which throw, while time-outs
// (0 and 1 ms among them), thread counts and priorities change. Then the pool is terminated. A work that
// reports success has to have written every one of its rows, and no row may ever be written twice.
LoadCounts RunLoad(LoadTarget& target, uint32_t seed, uint32_t submitters, uint32_t works_each);

}  // namespace prismo::mp

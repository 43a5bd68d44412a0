// The engine's thread priority is the system's own, on the workers and on nobody else.
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>

#include "PrismoUtl.h"

namespace prismo::test {
namespace {

std::atomic<int> priority_of_worker;

void AskPriority(MPWork* work) {
  int32_t first_row, row_count;
  for (int32_t first = 1; MPWorkTakeBlock(work, first, &first_row, &row_count); first = 0) {
    priority_of_worker = GetThreadPriority(GetCurrentThread());
  }
}

// A worker applies a new priority after the work at hand, at the latest.
bool WorkersTakePriority(int32_t priority) {
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(ExecWork2(&AskPriority, 0, 9, nullptr, 16, 10, 1, 16, nullptr, 0, 1, 0), 0u);
    if (priority_of_worker == priority) return true;
    Sleep(5);
  }
  return false;
}

TEST(Priority, OfWorkersIsWhatWasSet) {
  SetMPCount(1);
  const int own = GetThreadPriority(GetCurrentThread());
  for (const int priority : {THREAD_PRIORITY_LOWEST, THREAD_PRIORITY_HIGHEST, THREAD_PRIORITY_NORMAL}) {
    EXPECT_EQ(SetMPThreadPriority(priority), 0u);
    EXPECT_TRUE(WorkersTakePriority(priority)) << priority;
  }
  EXPECT_EQ(GetThreadPriority(GetCurrentThread()), own);
  EXPECT_EQ(TerminateMPThreads(), 0u);
}

}  // namespace
}  // namespace prismo::test

// Numbers of processes and threads.
#include "platform/process.h"

#include <gtest/gtest.h>

#include <thread>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace prismo::platform {
namespace {

TEST(Process, ThreadsHaveNumbersOfTheirOwn) {
  const uint32_t here = ThreadId();
  uint32_t there = 0;
  std::thread([&] { there = ThreadId(); }).join();
  EXPECT_NE(here, 0u);
  EXPECT_NE(there, here);
  EXPECT_EQ(ThreadId(), here);
}

#ifdef __linux__
TEST(Process, TheFirstThreadHasTheNumberOfItsProcess) {
  EXPECT_EQ(ThreadId(), ProcessId());
  const pid_t child = fork();
  if (child == 0) _exit(ThreadId() == static_cast<uint32_t>(getpid()) && ProcessId() == ThreadId() ? 0 : 1);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}
#endif

}  // namespace
}  // namespace prismo::platform

// The pool's end: called for, by a process that exits, in a child process, and with the library.
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "PrismoUtl.h"
#include "engine/fresh_pool.h"
#include "engine/pool_tools.h"
#include "engine/threads.h"
#include "support/emulation.h"

namespace prismo::mp {
namespace {

#if defined(__SANITIZE_THREAD__)
constexpr bool kThreadSanitizer = true;
#else
constexpr bool kThreadSanitizer = false;
#endif
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#else
constexpr bool kAddressSanitizer = false;
#endif

class Lifecycle : public FreshPool {};

uint32_t Exec(const Body& body, uint32_t rows) {
  return ExecWork1(&CallBody, 0, rows - 1, nullptr, 16, rows, 1, 16, const_cast<Body*>(&body), 1, 16, 0, 0,
                   1);
}

MPWork* Start(const Body& body, uint32_t rows) {
  MPWork* work = nullptr;
  StartWork(&work, &CallBody, 0, rows - 1, 0, 15, 0, 0, nullptr, 16, rows, 1, 16, const_cast<Body*>(&body),
            16, rows, 1, 16, 0, 0, 1);
  return work;
}

// Runs the body in a child process, which has to end by itself: its exit status, or -1.
template <class Child>
int InChild(Child&& body) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    body();
    _exit(0);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

TEST_F(Lifecycle, TerminateWithQueuedRunningAndListedWorks) {
  SetMPCount(1);
  Gate gate;
  std::atomic<int32_t> inside{0};
  const Body held = [&](MPWork* work) {
    ++inside;
    gate.Pass();
    Drain(work);
  };
  MPWork* listed = Start(held, 10);
  ASSERT_TRUE(Eventually([&] { return inside == 1; }));
  SetMPTimeout_msec(1);
  EXPECT_EQ(WaitWorkDone(listed), UTL_STS_TIMEOUT);
  for (int i = 0; i < 10; ++i) ASSERT_NE(Start(held, 10), nullptr);
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    gate.Open();
  });
  EXPECT_EQ(TerminateMPThreads(), 0u);
  EXPECT_EQ(Work::Live(), 0);
  opener.join();
  EXPECT_EQ(Exec(kDrain, 10), 0u);
}

TEST_F(Lifecycle, TerminateWakesSubmittersThatStillWait) {
  for (int round = 0; round < 20; ++round) {
    SetMPCount(1);
    SetMPTimeout_msec(0xFFFFFFFF);
    Gate gate;
    std::atomic<int32_t> inside{0};
    const Body held = [&](MPWork* work) {
      ++inside;
      gate.Pass();
      Drain(work);
    };
    std::vector<std::thread> submitters;
    std::atomic<int32_t> answered{0};
    for (int i = 0; i < 3; ++i) {
      submitters.emplace_back([&] {
        const uint32_t status = Exec(held, 10);
        answered += status == 0 || status == UTL_STS_FAILURE;
      });
    }
    ASSERT_TRUE(Eventually([&] { return inside == 1; }));
    std::thread opener([&] { gate.Open(); });
    TerminateMPThreads();
    for (std::thread& submitter : submitters) submitter.join();
    opener.join();
    EXPECT_EQ(answered, 3);
  }
  EXPECT_TRUE(Eventually([] { return Work::Live() == 0; }));
}

TEST_F(Lifecycle, HandlesOfATerminatedPoolAreUnknown) {
  MPWork* work = Start(kDrain, 10);
  TerminateMPThreads();
  EXPECT_EQ(WaitWorkDone(work), UTL_STS_INVALID_PARAMETER);
}

TEST_F(Lifecycle, TerminateAndStartAgain) {
  for (int round = 0; round < 100; ++round) {
    RowCounts rows(100);
    ASSERT_EQ(Exec(rows.CountingBody(), 100), 0u);
    ASSERT_TRUE(rows.All());
    TerminateMPThreads();
  }
  EXPECT_TRUE(WorkerThreadsAre(0));
  EXPECT_EQ(Work::Live(), 0);
}

TEST_F(Lifecycle, AChildProcessGetsItsOwnPool) {
  if (test::kUnderQemu) GTEST_SKIP() << "QEMU cannot fork a process of several threads";
  if (kThreadSanitizer) GTEST_SKIP() << "the thread sanitizer ends children that make threads";
  ASSERT_EQ(Exec(kDrain, 100), 0u);
  ASSERT_NE(Start(kDrain, 100), nullptr);
  EXPECT_EQ(InChild([] {
              RowCounts rows(100);
              if (!IsMPMngrNULL()) _exit(1);
              if (Exec(rows.CountingBody(), 100) != 0 || !rows.All()) _exit(2);
              TerminateMPThreads();
            }),
            0);
  EXPECT_FALSE(IsMPMngrNULL());
  EXPECT_EQ(Exec(kDrain, 100), 0u);
}

TEST_F(Lifecycle, AForkMayComeAtAnyMoment) {
  if (test::kUnderQemu) GTEST_SKIP() << "QEMU cannot fork a process of several threads";
  if (kThreadSanitizer) GTEST_SKIP() << "the thread sanitizer ends children that make threads";
  if (kAddressSanitizer)
    GTEST_SKIP() << "the address sanitizer's own locks do not survive a fork beside allocations";
  std::atomic<bool> stop{false};
  std::vector<std::thread> callers;
  for (int i = 0; i < 2; ++i) {
    callers.emplace_back([&, i] {
      while (!stop) {
        Exec(kDrain, 100);
        if (i == 0) TerminateMPThreads();
      }
    });
  }
  for (int round = 0; round < 20; ++round) {
    EXPECT_EQ(InChild([] {
                if (Exec(kDrain, 100) != 0) _exit(2);
                TerminateMPThreads();
              }),
              0);
  }
  stop = true;
  for (std::thread& caller : callers) caller.join();
}

// exit, not _exit: what runs when the library is unloaded.
TEST_F(Lifecycle, AProcessMayExitWithWorksOfAllKinds) {
  EXPECT_EQ(InChild([] {
              SetMPCount(2);
              std::exit(0);
            }),
            0);
  EXPECT_EQ(InChild([] {
              SetMPTimeout_msec(1);
              static const Body slow = [](MPWork* work) {
                ForEachBlock(work, [](int32_t, int32_t) {
                  std::this_thread::sleep_for(std::chrono::milliseconds(20));
                });
              };
              Exec(slow, 100);
              for (int i = 0; i < 3; ++i) Start(slow, 100);
              std::exit(0);
            }),
            0);
  EXPECT_EQ(InChild([] {
              SetMPTimeout_msec(0xFFFFFFFF);
              std::thread([] {
                for (;;) Exec(kDrain, 100);
              }).detach();
              std::this_thread::sleep_for(std::chrono::milliseconds(20));
              std::exit(0);
            }),
            0);
  // By a worker.
  EXPECT_EQ(InChild([] {
              static const Body exits = [](MPWork*) { std::exit(0); };
              Exec(exits, 100);
              std::this_thread::sleep_for(std::chrono::seconds(30));
            }),
            0);
}

// An application may handle the faults of its callbacks, and gets its other signals on threads of its own.
TEST_F(Lifecycle, WorkersReceiveNoSignalsButTheirOwnFaults) {
  static std::atomic<bool> faults_blocked{true}, others_blocked{false};
  const auto look = [](MPWork* work) {
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    faults_blocked = sigismember(&blocked, SIGSEGV) || sigismember(&blocked, SIGBUS) ||
                     sigismember(&blocked, SIGFPE) || sigismember(&blocked, SIGILL);
    others_blocked = sigismember(&blocked, SIGINT) && sigismember(&blocked, SIGALRM) &&
                     sigismember(&blocked, SIGTERM) && sigismember(&blocked, SIGUSR1);
    Drain(work);
  };
  ASSERT_EQ(ExecWork1(look, 0, 9, nullptr, 16, 10, 1, 16, nullptr, 1, 16, 0, 10, 0), 0u);
  EXPECT_FALSE(faults_blocked);
  EXPECT_TRUE(others_blocked);
}

// Waits go on after a signal whose handler has run, for no less and no longer than they should.
TEST_F(Lifecycle, SignalsDisturbNoWait) {
  static std::atomic<int> signals{0};
  struct sigaction action {};
  action.sa_handler = [](int) { ++signals; };  // without SA_RESTART: system calls end with EINTR
  ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
  const itimerval often{{0, 500}, {0, 500}}, never{};
  ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);
  StartMPThreads(1);
  const auto slowly = [](MPWork* work) {
    ForEachBlock(work, [](int32_t, int32_t) { std::this_thread::sleep_for(std::chrono::milliseconds(30)); });
  };
  const auto run = [&] { return ExecWork1(slowly, 0, 9, nullptr, 16, 10, 1, 16, nullptr, 1, 16, 0, 5, 0); };
  SetMPTimeout_msec(20'000);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(run(), 0u);
  SetMPTimeout_msec(20);
  const Stopwatch watch;
  EXPECT_EQ(run(), UTL_STS_TIMEOUT);
  EXPECT_GE(watch.Elapsed(), std::chrono::milliseconds(20));
  setitimer(ITIMER_REAL, &never, nullptr);
  EXPECT_GT(signals, 10);
}

}  // namespace
}  // namespace prismo::mp

// What the system knows about this process's threads.
#pragma once

#include <chrono>
#include <cstdint>

namespace prismo::mp {

// Whether there are this many worker threads, of whatever pools: before long, since the system takes its time
// to name new threads and to strike out ended ones.
bool WorkerThreadsAre(int32_t count);

inline constexpr int32_t kNoNiceValue = -100;

// Nice value of a thread; kNoNiceValue when there is no such thread, or where threads have none.
int32_t NiceOfThread(uint32_t thread_id);

// What all threads of this process have spent on processors.
std::chrono::milliseconds ProcessorTime();

// How often worker threads have gone to sleep; below 0 where the system does not tell.
int64_t SleepsOfWorkers();

// While it exists, this thread and those that it makes have but one processor, where threads inherit that.
class OneProcessor {
 public:
  OneProcessor();
  ~OneProcessor();
};

// While it exists, only this many more threads can be made.
class ThreadLimit {
 public:
  explicit ThreadLimit(int32_t threads);
  ~ThreadLimit();
};

}  // namespace prismo::mp

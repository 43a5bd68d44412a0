#include "engine/threads.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

#include "engine/pool_tools.h"

namespace prismo::mp {
namespace {

std::atomic<int32_t> threads_allowed{INT_MAX};

// Calls use(folder) with what the system says of each worker. By their name, since sanitizers have threads of
// their own.
template <class Use>
void ForEachWorker(const Use& use) {
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream file(task.path() / "comm");
    std::string name;
    if (std::getline(file, name) && name == "PrismoUtl") use(task.path());
  }
}

int32_t NamedWorkers() {
  int32_t workers = 0;
  ForEachWorker([&](const std::filesystem::path&) { ++workers; });
  return workers;
}

cpu_set_t before_one_processor;

}  // namespace

bool WorkerThreadsAre(int32_t count) {
  return Eventually([&] { return NamedWorkers() == count; });
}

int32_t NiceOfThread(uint32_t thread_id) {
  errno = 0;
  const int nice = getpriority(PRIO_PROCESS, thread_id);
  return errno == 0 ? nice : kNoNiceValue;
}

std::chrono::milliseconds ProcessorTime() {
  return std::chrono::milliseconds(std::clock() / (CLOCKS_PER_SEC / 1000));
}

int64_t SleepsOfWorkers() {
  int64_t sleeps = 0;
  ForEachWorker([&](const std::filesystem::path& folder) {
    std::ifstream file(folder / "status");
    for (std::string word; file >> word;) {
      int64_t count = 0;
      if (word == "voluntary_ctxt_switches:" && file >> count) sleeps += count;
    }
  });
  return sleeps;
}

OneProcessor::OneProcessor() {
  sched_getaffinity(0, sizeof(before_one_processor), &before_one_processor);
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<size_t>(sched_getcpu()), &one);
  sched_setaffinity(0, sizeof(one), &one);
}
OneProcessor::~OneProcessor() { sched_setaffinity(0, sizeof(before_one_processor), &before_one_processor); }

ThreadLimit::ThreadLimit(int32_t threads) { threads_allowed = threads; }
ThreadLimit::~ThreadLimit() { threads_allowed = INT_MAX; }

}  // namespace prismo::mp

// Stands before the system's own in this program.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*procedure)(void*),
                              void* argument) noexcept {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  if (prismo::mp::threads_allowed.fetch_sub(1) <= 0) {
    prismo::mp::threads_allowed.fetch_add(1);
    return EAGAIN;
  }
  return create(thread, attributes, procedure, argument);
}

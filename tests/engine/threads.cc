#include "engine/threads.h"

#include <dlfcn.h>
#include <pthread.h>
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

// By their name, since sanitizers have threads of their own.
int32_t NamedWorkers() {
  int32_t workers = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream file(task.path() / "comm");
    std::string name;
    workers += std::getline(file, name) && name == "PrismoUtl";
  }
  return workers;
}

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

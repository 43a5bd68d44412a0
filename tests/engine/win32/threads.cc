#include "engine/threads.h"

#include <windows.h>

#include <tlhelp32.h>

#include "engine/pool_tools.h"

namespace prismo::mp {
namespace {

int32_t ThreadsOfThisProcess() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof(entry);
  int32_t threads = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    threads += entry.th32OwnerProcessID == GetCurrentProcessId();
  }
  CloseHandle(snapshot);
  return threads;
}

// Whoever asks is the only thread beside the workers.
const int32_t others = ThreadsOfThisProcess();

}  // namespace

bool WorkerThreadsAre(int32_t count) {
  return Eventually([&] { return ThreadsOfThisProcess() - others == count; });
}

int32_t NiceOfThread(uint32_t) { return kNoNiceValue; }

std::chrono::milliseconds ProcessorTime() {
  // In units of 100 nanoseconds.
  const auto units = [](const FILETIME& time) {
    return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
  };
  FILETIME created, ended, kernel, user;
  GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
  return std::chrono::milliseconds((units(kernel) + units(user)) / 10'000);
}

int64_t SleepsOfWorkers() { return -1; }

OneProcessor::OneProcessor() = default;
OneProcessor::~OneProcessor() = default;

}  // namespace prismo::mp

#include "platform/thread.h"

#include <windows.h>

#include <process.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <new>

#include "platform/win32/module.h"
#include "platform/word_wait.h"

namespace prismo::platform {
namespace {

constexpr DWORD kPollMs = 10;
constexpr std::chrono::milliseconds kBeginLimit{100};

enum Stage : uint32_t {
  kMade,
  kRunning,
  kLeaving,   // nothing of ours left to do but to call _endthreadex
  kCancelled  // must not begin any more
};

struct State {
  HANDLE handle = nullptr;
  std::atomic<uint32_t> stage{kMade};
};

void AwaitBegin(const State& state) {
  using Clock = std::chrono::steady_clock;
  const auto limit = Clock::now() + kBeginLimit;
  for (auto now = Clock::now(); state.stage == kMade && now < limit; now = Clock::now()) {
    WaitWhile(state.stage, kMade, limit - now);
  }
}

bool IsOurs(DWORD64 address) {
  const auto base = reinterpret_cast<DWORD64>(Module());
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + static_cast<DWORD64>(dos->e_lfanew));
  return address - base < headers->OptionalHeader.SizeOfImage;
}

// Whether a leaving thread has come out of this library's code, to which it does not return.
bool IsOutside(HANDLE thread) {
  if (SuspendThread(thread) == static_cast<DWORD>(-1)) return true;  // there is no thread any more
  CONTEXT context{};
  context.ContextFlags = CONTEXT_CONTROL;
  const bool outside = GetThreadContext(thread, &context) && !IsOurs(context.Rip);
  ResumeThread(thread);
  return outside;
}

}  // namespace

void* Thread::Enter(void* self) {
  auto* thread = static_cast<Thread*>(self);
  auto* state = reinterpret_cast<State*>(thread->handle_);
  uint32_t made = kMade;
  if (state->stage.compare_exchange_strong(made, kRunning)) {
    WakeOne(state->stage);
    thread->procedure_(thread->argument_);
    state->stage = kLeaving;
  }
  return nullptr;
}

// Returns when the thread runs, so that whoever unloads the library next meets none that still has to begin.
// Only where a caller holds the loader's lock, in which none can begin, does it leave one behind after a
// while.
bool Thread::Start(void (*procedure)(void*), void* argument) noexcept {
  procedure_ = procedure;
  argument_ = argument;
  std::unique_ptr<State> state(new (std::nothrow) State);
  if (!state) return false;
  handle_ = reinterpret_cast<uintptr_t>(state.get());
  const auto run = [](void* self) -> unsigned {
    Enter(self);
    _endthreadex(0);
    return 0;
  };
  const uintptr_t handle = _beginthreadex(nullptr, 0, run, this, 0, nullptr);
  if (handle == 0) return false;
  state->handle = reinterpret_cast<HANDLE>(handle);
  AwaitBegin(*state.release());
  started_ = true;
  return true;
}

// The end of a thread needs the loader's lock, which whoever unloads the library holds: there the handle is
// never signalled, and it has to do that the thread is on its way and outside. For the same reason a thread
// that has not begun by then cannot begin before the library is gone, and is ended where it waits: the last
// resort, since the loader's lock goes on counting it among those who wait.
void Thread::Join() noexcept {
  if (!started_) return;
  started_ = false;
  const std::unique_ptr<State> state(reinterpret_cast<State*>(handle_));
  DWORD code = 0;
  while (GetExitCodeThread(state->handle, &code) && code == STILL_ACTIVE) {
    if (WaitForSingleObject(state->handle, kPollMs) == WAIT_OBJECT_0) break;
    if (state->stage == kLeaving && IsOutside(state->handle)) break;
    uint32_t made = kMade;
    if (UnloadState() == Unload::kAlone && state->stage.compare_exchange_strong(made, kCancelled)) {
      TerminateThread(state->handle, 0);
    }
  }
  CloseHandle(state->handle);
}

}  // namespace prismo::platform

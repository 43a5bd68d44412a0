#include "platform/thread.h"

#include <windows.h>

#include <process.h>

#include <atomic>
#include <memory>
#include <new>

#include "platform/win32/module.h"

namespace prismo::platform {
namespace {

constexpr DWORD kPollMs = 10;

enum class Stage {
  kMade,
  kRunning,
  kLeaving,   // nothing of ours left to do but to call _endthreadex
  kCancelled  // must not begin any more
};

struct State {
  HANDLE handle = nullptr;
  std::atomic<Stage> stage{Stage::kMade};
};

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
  Stage made = Stage::kMade;
  if (state->stage.compare_exchange_strong(made, Stage::kRunning)) {
    thread->procedure_(thread->argument_);
    state->stage.store(Stage::kLeaving);
  }
  return nullptr;
}

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
  state.release()->handle = reinterpret_cast<HANDLE>(handle);
  started_ = true;
  return true;
}

// The end of a thread needs the loader's lock, which whoever unloads the library holds: there the handle is
// never signalled, and it has to do that the thread is on its way and outside. For the same reason a thread
// that has not begun by then cannot begin before the library is gone, and is ended where it waits.
void Thread::Join() noexcept {
  if (!started_) return;
  started_ = false;
  const std::unique_ptr<State> state(reinterpret_cast<State*>(handle_));
  DWORD code = 0;
  while (GetExitCodeThread(state->handle, &code) && code == STILL_ACTIVE) {
    if (WaitForSingleObject(state->handle, kPollMs) == WAIT_OBJECT_0) break;
    const Stage stage = state->stage.load();
    if (stage == Stage::kLeaving && IsOutside(state->handle)) break;
    Stage made = Stage::kMade;
    if (UnloadState() == Unload::kAlone && state->stage.compare_exchange_strong(made, Stage::kCancelled)) {
      TerminateThread(state->handle, 0);
    }
  }
  CloseHandle(state->handle);
}

}  // namespace prismo::platform

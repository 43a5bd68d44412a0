#include "platform/thread.h"

#include <pthread.h>
#include <signal.h>

#include <initializer_list>

namespace prismo::platform {

static_assert(sizeof(pthread_t) == sizeof(uintptr_t));

void* Thread::Enter(void* self) {
  pthread_setname_np(pthread_self(), "PrismoUtl");  // for whoever looks at the process from outside
  auto* thread = static_cast<Thread*>(self);
  thread->procedure_(thread->argument_);
  return nullptr;
}

bool Thread::Start(void (*procedure)(void*), void* argument) noexcept {
  procedure_ = procedure;
  argument_ = argument;
  // A new thread inherits the mask. What it brings on itself stays with it: an application may handle the
  // faults of its callbacks.
  sigset_t others, before;
  sigfillset(&others);
  for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) sigdelset(&others, own);
  pthread_sigmask(SIG_SETMASK, &others, &before);
  pthread_t handle;
  started_ = pthread_create(&handle, nullptr, &Thread::Enter, this) == 0;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  if (started_) handle_ = static_cast<uintptr_t>(handle);
  return started_;
}

void Thread::Join() noexcept {
  if (!started_) return;
  started_ = false;
  pthread_join(static_cast<pthread_t>(handle_), nullptr);
}

}  // namespace prismo::platform

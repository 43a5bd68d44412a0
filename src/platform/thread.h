// Threads with the system's default stack that receive none of the process's signals, only those that they
// cause themselves.
#pragma once

#include <cstddef>
#include <cstdint>

namespace prismo::platform {

class Thread {
 public:
  Thread() = default;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  // False when the system refuses another thread. The object must stay where it is until Join.
  bool Start(void (*procedure)(void* argument), void* argument) noexcept;

  // Waits until the thread executes no code of this library any more. Nothing happens without a thread.
  void Join() noexcept;

 private:
  static void* Enter(void* self);

  void (*procedure_)(void*) = nullptr;
  void* argument_ = nullptr;
  uintptr_t handle_ = 0;
  bool started_ = false;
};

}  // namespace prismo::platform

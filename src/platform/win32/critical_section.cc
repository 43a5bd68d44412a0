#include "platform/critical_section.h"

#include <windows.h>

#include <new>

#include "platform/process.h"

namespace prismo::platform {
namespace {

// The slim lock: the only one of the system's that is born unlocked out of zeros.
SRWLOCK* Lock(std::byte* storage) {
  static_assert(sizeof(SRWLOCK) <= 48 && alignof(SRWLOCK) <= 8);
  return std::launder(reinterpret_cast<SRWLOCK*>(storage));
}

}  // namespace

// Threads that the end of the process has cut off leave their locks locked, and nobody to be kept out.
void CriticalSection::lock() noexcept {
  if (OtherThreadsAreGone()) {
    try_lock();
  } else {
    AcquireSRWLockExclusive(Lock(storage_));
  }
}

bool CriticalSection::try_lock() noexcept { return TryAcquireSRWLockExclusive(Lock(storage_)) != FALSE; }

void CriticalSection::unlock() noexcept { ReleaseSRWLockExclusive(Lock(storage_)); }

}  // namespace prismo::platform

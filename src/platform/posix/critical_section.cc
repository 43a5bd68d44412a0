#include "platform/critical_section.h"

#include <pthread.h>

#include <new>

namespace prismo::platform {
namespace {

pthread_mutex_t* Mutex(std::byte* storage) {
  static_assert(sizeof(pthread_mutex_t) <= 48 && alignof(pthread_mutex_t) <= 8);
  return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}

}  // namespace

void CriticalSection::lock() noexcept { pthread_mutex_lock(Mutex(storage_)); }

bool CriticalSection::try_lock() noexcept { return pthread_mutex_trylock(Mutex(storage_)) == 0; }

void CriticalSection::unlock() noexcept { pthread_mutex_unlock(Mutex(storage_)); }

}  // namespace prismo::platform

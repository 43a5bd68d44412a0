#include "platform/fork_handler.h"

#include <pthread.h>

namespace prismo::platform {

// Unloading the library unregisters the handler: the C library ties it to the module that registers it.
void AfterForkInChild(void (*handler)()) noexcept { pthread_atfork(nullptr, nullptr, handler); }

}  // namespace prismo::platform

#include "platform/process.h"

#include <sys/syscall.h>
#include <unistd.h>

#include "platform/fork_handler.h"

namespace prismo::platform {
namespace {

// Asking the kernel costs more than a record of the log does. In the initial-exec model, since any other may
// take the loader's lock at a thread's first access, and who unloads the library holds that lock while it
// waits for our threads.
[[gnu::tls_model("initial-exec")]] constinit thread_local uint32_t thread_id = 0;

// The thread that forks goes on in the child under another number.
[[maybe_unused]] const bool forgets_in_child = (AfterForkInChild([] { thread_id = 0; }), true);

}  // namespace

uint32_t ProcessId() noexcept { return static_cast<uint32_t>(getpid()); }

uint32_t ThreadId() noexcept {
  if (thread_id == 0) thread_id = static_cast<uint32_t>(syscall(SYS_gettid));
  return thread_id;
}

bool OtherThreadsAreGone() noexcept { return false; }

}  // namespace prismo::platform

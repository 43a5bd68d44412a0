// What happens when the library is unloaded or the process exits.
#include "platform/module.h"

#include "mp/controls.h"
#include "platform/kept_pages.h"

// Works that were given up come back with their pages when the pool ends.
void prismo::platform::AtUnload() noexcept {
  mp::TerminateThreads();
  ReleaseKeptPages();
}

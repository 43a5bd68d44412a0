// What happens when the library is unloaded or the process exits.
#include "platform/module.h"

#include "mp/controls.h"

void prismo::platform::AtUnload() noexcept { mp::TerminateThreads(); }

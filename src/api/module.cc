// What happens when the library is unloaded or the process exits.
#include "mp/controls.h"

namespace {

// Runs after the destructors of an application's own objects, which may still convert.
[[gnu::destructor]] void Unload() { prismo::mp::TerminateThreads(); }

}  // namespace

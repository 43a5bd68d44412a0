#include "platform/module.h"

namespace {

[[gnu::destructor]] void Unload() { prismo::platform::AtUnload(); }

}  // namespace

#include "platform/fork_handler.h"

namespace prismo::platform {

void AfterForkInChild(void (*)()) noexcept {}

}  // namespace prismo::platform

#pragma once

namespace prismo::platform {

// Has the handler called in every child process that fork makes from now on, before fork returns there. Where
// processes are not made by fork nothing happens.
void AfterForkInChild(void (*handler)()) noexcept;

}  // namespace prismo::platform

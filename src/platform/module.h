// The end of the library.
#pragma once

namespace prismo::platform {

// Called once when the library is unloaded or the process exits, after the destructors of an application's
// own objects, which may still convert. The library defines what happens then.
void AtUnload() noexcept;

}  // namespace prismo::platform

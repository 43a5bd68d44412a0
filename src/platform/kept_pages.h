// Memory of the size of a picture that one call leaves to the next: getting fresh pages takes the system
// about as long as filling them.
#pragma once

#include <cstddef>
#include <memory>

namespace prismo::platform {

// At least `bytes`, of undefined content, aligned to a page. Null when the system has no memory; throws
// std::bad_alloc when there is none for the pointer itself. Pages are kept when their last owner lets go,
// those of one call, up to 128 MiB.
std::shared_ptr<void> TakePages(size_t bytes);

// For the end of the library.
void ReleaseKeptPages() noexcept;

}  // namespace prismo::platform

// Memory in whole pages, zero-filled, readable and writable.
#pragma once

#include <cstddef>

namespace prismo::platform {

// Null for 0 bytes and when the system cannot give that many. The memory starts on a page.
void* AllocatePages(size_t bytes) noexcept;

// Releases what AllocatePages returned; null is ignored.
void FreePages(void* pages) noexcept;

}  // namespace prismo::platform

// Memory in whole pages, zero-filled, readable and writable.
#pragma once

#include <cstddef>

namespace prismo::platform {

enum class PageUse {
  kData,
  kFrame,  // frames handed to applications; on Windows their pages have always been executable as well
};

// Null for 0 bytes and when the system cannot give that many. The memory starts on a page.
void* AllocatePages(size_t bytes, PageUse use = PageUse::kData) noexcept;

// Releases what AllocatePages returned; null is ignored.
void FreePages(void* pages) noexcept;

}  // namespace prismo::platform

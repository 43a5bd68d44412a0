#include "platform/page_memory.h"

#include <windows.h>

namespace prismo::platform {

void* AllocatePages(size_t bytes, PageUse use) noexcept {
  if (bytes == 0) return nullptr;
  return VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT,
                      use == PageUse::kFrame ? PAGE_EXECUTE_READWRITE : PAGE_READWRITE);
}

void FreePages(void* pages) noexcept {
  if (pages) VirtualFree(pages, 0, MEM_RELEASE);
}

}  // namespace prismo::platform

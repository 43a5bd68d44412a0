#include "platform/page_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace prismo::platform {
namespace {

size_t PageSize() {
  static const auto page_size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return page_size;
}

}  // namespace

// A page in front of the caller's holds the size of the mapping, which munmap wants back.
void* AllocatePages(size_t bytes, PageUse) noexcept {
  const size_t page = PageSize();
  if (bytes == 0 || bytes > PTRDIFF_MAX - page) return nullptr;
  const size_t mapped = page + bytes;
  void* base = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (base == MAP_FAILED) return nullptr;
  *static_cast<size_t*>(base) = mapped;
  return static_cast<char*>(base) + page;
}

void FreePages(void* pages) noexcept {
  if (!pages) return;
  void* base = static_cast<char*>(pages) - PageSize();
  munmap(base, *static_cast<size_t*>(base));
}

}  // namespace prismo::platform

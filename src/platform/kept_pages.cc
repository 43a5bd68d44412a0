#include "platform/kept_pages.h"

#include <atomic>

#include "platform/page_memory.h"

namespace prismo::platform {
namespace {

struct Pages {
  explicit Pages(size_t size) : bytes(size), memory(AllocatePages(size)) {}
  ~Pages() { FreePages(memory); }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  const size_t bytes;
  void* const memory;
};

constexpr size_t kMostKept = size_t{128} << 20;

// A plain pointer, which may be null: applications may convert before any constructor of ours has run, and
// after every destructor.
constinit std::atomic<Pages*> kept_pages{nullptr};

void Keep(Pages* pages) {
  if (pages->memory != nullptr && pages->bytes <= kMostKept) pages = kept_pages.exchange(pages);
  delete pages;
}

}  // namespace

std::shared_ptr<void> TakePages(size_t bytes) {
  std::unique_ptr<Pages> pages(kept_pages.exchange(nullptr));
  if (!pages || pages->bytes < bytes) pages = std::make_unique<Pages>(bytes);
  void* const memory = pages->memory;
  return {memory, [owned = pages.release()](void*) { Keep(owned); }};
}

void ReleaseKeptPages() noexcept { delete kept_pages.exchange(nullptr); }

}  // namespace prismo::platform

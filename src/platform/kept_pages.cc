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

// Plain pointers, which may be null: applications may convert before any constructor of ours has run, and
// after every destructor.
constinit std::atomic<Pages*> kept_pages[2]{};

void Keep(std::atomic<Pages*>& kept, Pages* pages) {
  if (pages->memory != nullptr && pages->bytes <= kMostKept) pages = kept.exchange(pages);
  delete pages;
}

}  // namespace

std::shared_ptr<void> TakePages(KeptFor use, size_t bytes) {
  std::atomic<Pages*>& kept = kept_pages[static_cast<size_t>(use)];
  std::unique_ptr<Pages> pages(kept.exchange(nullptr));
  if (!pages || pages->bytes < bytes) pages = std::make_unique<Pages>(bytes);
  void* const memory = pages->memory;
  return {memory, [&kept, owned = pages.release()](void*) { Keep(kept, owned); }};
}

void ReleaseKeptPages() noexcept {
  for (std::atomic<Pages*>& kept : kept_pages) delete kept.exchange(nullptr);
}

}  // namespace prismo::platform

#include "support/guarded_buffer.h"

#include <cstring>
#include <new>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace prismo::test {
namespace {

#if defined(_WIN32)
size_t PageSize() {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwPageSize;
}
uint8_t* Reserve(size_t size) {
  return static_cast<uint8_t*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
}
bool Open(uint8_t* at, size_t size) { return VirtualAlloc(at, size, MEM_COMMIT, PAGE_READWRITE) != nullptr; }
void Release(uint8_t* at, size_t) { VirtualFree(at, 0, MEM_RELEASE); }
#else
size_t PageSize() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }
uint8_t* Reserve(size_t size) {
  void* at = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return at == MAP_FAILED ? nullptr : static_cast<uint8_t*>(at);
}
bool Open(uint8_t* at, size_t size) { return mprotect(at, size, PROT_READ | PROT_WRITE) == 0; }
void Release(uint8_t* at, size_t size) { munmap(at, size); }
#endif

uint8_t Canary(const uint8_t* at) { return static_cast<uint8_t>(0xA5 ^ reinterpret_cast<uintptr_t>(at)); }

// Large buffers need few canaries, small ones get all of their pages filled.
constexpr size_t kCanaryReach = 4096;

}  // namespace

Placement Placement::Nth(size_t i, size_t unit) {
  const Edge edge = i % 2 == 0 ? Edge::kBehind : Edge::kBefore;
  const size_t step = i / 2;
  return {edge, step % 4 == 0 ? kTight : (step - step / 4 - 1) * 13 * unit % 64};
}

GuardedBuffer::GuardedBuffer(size_t size, Placement placement) : size_(size) {
  const size_t page = PageSize();
  region_size_ = (size + kCanaryReach + 64 + page - 1) / page * page;
  uint8_t* reserved = Reserve(region_size_ + 2 * page);
  if (!reserved) throw std::bad_alloc();
  region_ = reserved + page;
  if (!Open(region_, region_size_)) throw std::bad_alloc();

  const bool tight = placement.misalignment == Placement::kTight;
  if (placement.guard == Placement::Edge::kBefore) {
    data_ = region_ + (tight ? 0 : placement.misalignment);
  } else {
    data_ = region_ + region_size_ - size;
    if (!tight) data_ -= (reinterpret_cast<uintptr_t>(data_) - placement.misalignment) % 64;
  }
  for (uint8_t* at = region_; at < region_ + region_size_; ++at) {
    if (at == data_) at += size_;
    if (at < region_ + region_size_) *at = Canary(at);
  }
}

GuardedBuffer::GuardedBuffer(std::span<const uint8_t> content, Placement placement)
    : GuardedBuffer(content.size(), placement) {
  if (!content.empty()) std::memcpy(data_, content.data(), content.size());
}

GuardedBuffer::~GuardedBuffer() { Release(region_ - PageSize(), region_size_ + 2 * PageSize()); }

testing::AssertionResult GuardedBuffer::CanariesIntact() const {
  const uint8_t* end = region_ + region_size_;
  for (const uint8_t* at = region_; at < end; ++at) {
    if (at == data_) at += size_;
    if (at >= end) break;
    if (*at != Canary(at)) {
      return testing::AssertionFailure() << "a byte " << (at < data_ ? data_ - at : at - (data_ + size_) + 1)
                                         << (at < data_ ? " before the start" : " behind the end") << " of "
                                         << size_ << " bytes was written";
    }
  }
  return testing::AssertionSuccess();
}

}  // namespace prismo::test

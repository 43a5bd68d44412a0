#include "support/guarded_buffer.h"

#include <bit>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <vector>

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

constexpr size_t kCanaryReach = 4096;

// Pages between two guard pages. Mapping is slow, above all under ThreadSanitizer, so small ones are used
// again.
class Regions {
 public:
  static Regions& Get() {
    static Regions regions;
    return regions;
  }

  uint8_t* Take(size_t size) {
    {
      const std::lock_guard lock(mutex_);
      std::vector<uint8_t*>& free = free_[size];
      if (!free.empty()) {
        uint8_t* region = free.back();
        free.pop_back();
        return region;
      }
    }
    const size_t page = PageSize();
    uint8_t* reserved = Reserve(size + 2 * page);
    if (!reserved || !Open(reserved + page, size)) throw std::bad_alloc();
    return reserved + page;
  }

  void Give(uint8_t* region, size_t size) {
    if (size > kKeptSize) return Release(region - PageSize(), size + 2 * PageSize());
    const std::lock_guard lock(mutex_);
    free_[size].push_back(region);
  }

 private:
  static constexpr size_t kKeptSize = 1 << 20;
  std::mutex mutex_;
  std::map<size_t, std::vector<uint8_t*>> free_;  // by size
};

}  // namespace

Placement Placement::Nth(size_t i, size_t unit) {
  const Edge edge = i % 2 == 0 ? Edge::kBehind : Edge::kBefore;
  const size_t step = i / 2;
  return {edge, step % 4 == 0 ? kTight : (step - step / 4 - 1) * 13 * unit % 64};
}

GuardedBuffer::GuardedBuffer(size_t size, Placement placement) : size_(size) {
  region_size_ = std::bit_ceil((size + kCanaryReach + 64 + PageSize() - 1) / PageSize()) * PageSize();
  region_ = Regions::Get().Take(region_size_);

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

GuardedBuffer::~GuardedBuffer() { Regions::Get().Give(region_, region_size_); }

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

#include "engine/failing_new.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace prismo::mp {
namespace {

constinit thread_local int32_t until_failure = -1;
constinit thread_local bool failed = false;

}  // namespace

FailingNew::FailingNew(int32_t which) {
  failed = false;
  until_failure = which;
}

FailingNew::~FailingNew() { until_failure = -1; }

bool FailingNew::Failed() const { return failed; }

namespace {

void* Allocate(size_t size, size_t alignment) {
  if (until_failure >= 0 && until_failure-- == 0) {
    failed = true;
    throw std::bad_alloc();
  }
  void* memory = std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace
}  // namespace prismo::mp

// All forms, so that sanitizers see none of theirs meet one of these.
void* operator new(size_t size) { return prismo::mp::Allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__); }
void* operator new[](size_t size) { return operator new(size); }
void* operator new(size_t size, std::align_val_t alignment) {
  return prismo::mp::Allocate(size, static_cast<size_t>(alignment));
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (...) {
    return nullptr;
  }
}
void* operator new[](size_t size, const std::nothrow_t& tag) noexcept { return operator new(size, tag); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

// Shared ownership by a count inside the object.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace prismo::mp {

template <class T>
class Ref;

// Base of what Refs own: the last of them deletes it.
template <class T>
class Counted {
 public:
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  // Only what holds by itself if true: with one owner, nobody else can make another.
  bool HasOneOwner() const { return owners_.load(std::memory_order_acquire) == 1; }

 protected:
  Counted() = default;
  ~Counted() = default;

 private:
  friend class Ref<T>;
  std::atomic<int32_t> owners_{0};
};

template <class T>
class Ref {
 public:
  Ref() = default;
  explicit Ref(T* object) : object_(object) {
    if (object_) Owners().fetch_add(1, std::memory_order_relaxed);
  }
  Ref(const Ref& other) : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(other.Detach()) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() {
    if (object_ && Owners().fetch_sub(1, std::memory_order_acq_rel) == 1) delete object_;
  }

  // Takes over, and gives away, ownership that a plain pointer stands for.
  static Ref Adopt(T* object) {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  T* Detach() { return std::exchange(object_, nullptr); }

  T* Get() const { return object_; }
  T& operator*() const { return *object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  std::atomic<int32_t>& Owners() const { return static_cast<Counted<T>*>(object_)->owners_; }

  T* object_ = nullptr;
};

}  // namespace prismo::mp

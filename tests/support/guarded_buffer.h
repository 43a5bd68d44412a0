// Memory between inaccessible pages: reading or writing past the end that touches one stops the test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <gtest/gtest.h>

namespace prismo::test {

struct Placement {
  enum class Edge : uint8_t { kBehind, kBefore };
  static constexpr size_t kTight = 64;

  Edge guard = Edge::kBehind;    // the edge of the buffer that lies at an inaccessible page
  size_t misalignment = kTight;  // of the start, modulo 64; kTight: no gap between buffer and page at all

  // A placement for the i-th use: every misalignment at both edges comes round. Misalignments are multiples
  // of `unit` bytes.
  static Placement Nth(size_t i, size_t unit = 1);
};

// Bytes at a chosen place. What lies between the buffer and the guard pages holds canaries.
class GuardedBuffer {
 public:
  GuardedBuffer(size_t size, Placement placement);
  GuardedBuffer(std::span<const uint8_t> content, Placement placement);
  ~GuardedBuffer();
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  uint8_t* data() { return data_; }
  const uint8_t* data() const { return data_; }
  size_t size() const { return size_; }
  std::span<uint8_t> bytes() { return {data_, size_}; }
  std::span<const uint8_t> bytes() const { return {data_, size_}; }

  testing::AssertionResult CanariesIntact() const;

 private:
  uint8_t* region_;  // the accessible pages
  size_t region_size_;
  uint8_t* data_;
  size_t size_;
};

}  // namespace prismo::test

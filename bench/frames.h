// Camera frames of one scene in every format, and the memory that conversions work in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace prismo::bench {

struct Size {
  uint32_t width = 0;
  uint32_t height = 0;

  size_t Pixels() const { return size_t{width} * height; }
  bool operator==(const Size&) const = default;
};

size_t RowBytes(uint32_t format, uint32_t width);

// Draws the scene, colours with edges, texture and sensor noise, in this format.
void DrawFrame(uint32_t format, Size size, uint8_t* frame);

// A source and a target one behind the other, each `misalignment` bytes after the beginning of a page.
class Memory {
 public:
  Memory(size_t source_bytes, size_t target_bytes, size_t misalignment);

  uint8_t* Source() const { return source_; }
  uint8_t* Target() const { return target_; }

 private:
  struct Free {
    void operator()(uint8_t* memory) const { std::free(memory); }
  };

  std::unique_ptr<uint8_t, Free> pages_;
  uint8_t* source_;
  uint8_t* target_;
};

}  // namespace prismo::bench

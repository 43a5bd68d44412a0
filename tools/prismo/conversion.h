// Frames to pictures, through the library.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "frame.h"

namespace prismo::tool {

enum class Demosaic { kBilinear, kAdaptive, kNone };

struct Rectangle {
  uint32_t left, top, width, height;
};

// "X,Y,W,H"
Rectangle ParseRectangle(const std::string& text);

// Threads that a conversion may use: the caller's alone, or the library's pool.
class ThreadChoice {
 public:
  // "caller", or the number of threads of the pool; empty for one for each processor.
  static ThreadChoice Parse(const std::string& text);
  static ThreadChoice Caller() { return ThreadChoice(0); }

  // Starts the pool if one was chosen. To be called once, before the first conversion.
  void Prepare() const;

  int count() const { return count_; }
  bool UsesPool() const { return count_ > 0; }
  // The pool splits a frame into pairs of rows for each thread; frames that it cannot split so are for the
  // caller.
  bool UsesPoolFor(uint32_t height) const;
  std::string Description(uint32_t height) const;

 private:
  explicit ThreadChoice(int count) : count_(count) {}
  int count_;  // 0: the caller's thread
};

struct Conversion {
  std::optional<Demosaic> demosaic;  // bilinear unless given; adaptive for a rectangle
  std::optional<Rectangle> rectangle;
  ThreadChoice threads = ThreadChoice::Caller();
};

// Throws for a frame that the library cannot convert.
void CheckConvertible(const Frame& frame);

// The two steps of Convert, for those who measure: a picture of the right size, and the library's work.
Picture PictureFor(const Frame& frame, const Conversion& conversion, uint32_t channels);
void ConvertInto(Picture& picture, const Frame& frame, const Conversion& conversion);

// Throws where the library would refuse the frame, and says why.
Picture Convert(const Frame& frame, const Conversion& conversion, uint32_t channels);

// The same samples at 8 bits, which the adaptive demosaic needs.
Frame BayerFrameOf8Bits(const Frame& frame);

// Planes in the order blue, green, red, each a grey picture.
std::array<Picture, 3> ConvertToPlanes(const Frame& frame, const Conversion& conversion);

// Monochrome frames, and Bayer frames that are not demosaiced, have no colour.
bool IsGrey(const Frame& frame, const Conversion& conversion);

}  // namespace prismo::tool

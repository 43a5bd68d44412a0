#include "reference/synthesis.h"

#include <cstdlib>
#include <stdexcept>

#include "reference/pictures.h"

namespace prismo::reference {
namespace {

struct Sums {
  int32_t b, g, r;
};

// A sum of three products, each step rounded to double precision, in the order written.
double Weigh(double first, int32_t a, double second, int32_t b, double third, int32_t c) {
  const volatile double x = first * a;
  const volatile double y = second * b;
  const volatile double z = third * c;
  const volatile double sum = x + y;
  return sum + z;
}

uint32_t Limit(double value, uint32_t maximum) {
  return value > maximum ? maximum : static_cast<uint32_t>(static_cast<int32_t>(value));
}

uint32_t Luma(const Sums& p, uint32_t extra_bits) {
  const double scale = 1u << extra_bits;
  return Limit(Weigh(0.114 * scale, p.b, 0.587 * scale, p.g, 0.299 * scale, p.r),
               (1u << (8 + extra_bits)) - 1);
}

// Chroma of the mean of `pixels` pixels whose channels were summed.
uint8_t ChromaU(const Sums& s, int pixels) {
  return static_cast<uint8_t>(
      Limit(Weigh(0.5 / pixels, s.b, -0.331 / pixels, s.g, -0.169 / pixels, s.r) + 128, 255));
}
uint8_t ChromaV(const Sums& s, int pixels) {
  return static_cast<uint8_t>(
      Limit(Weigh(0.5 / pixels, s.r, -0.419 / pixels, s.g, -0.081 / pixels, s.b) + 128, 255));
}

struct Target {
  uint32_t format;
  enum class Kind : uint8_t { kLuma, kRgb, kBgr, kYuv } kind;
  uint32_t extra_bits;
  uint32_t group_pixels;
  uint32_t group_bytes;
};

constexpr Target kTargets[] = {
    {0x01080001, Target::Kind::kLuma, 0, 1, 1}, {0x01100003, Target::Kind::kLuma, 2, 1, 2},
    {0x01100005, Target::Kind::kLuma, 4, 1, 2}, {0x01100007, Target::Kind::kLuma, 8, 1, 2},
    {0x02180014, Target::Kind::kRgb, 0, 1, 3},  {0x02180015, Target::Kind::kBgr, 0, 1, 3},
    {0x02300018, Target::Kind::kRgb, 2, 1, 6},  {0x0230001A, Target::Kind::kRgb, 4, 1, 6},
    {0x02300019, Target::Kind::kBgr, 2, 1, 6},  {0x0230001B, Target::Kind::kBgr, 4, 1, 6},
    {0x02180020, Target::Kind::kYuv, 0, 1, 3},  {0x0210001F, Target::Kind::kYuv, 0, 2, 4},
    {0x020C001E, Target::Kind::kYuv, 0, 4, 6},
};

const Target* Find(uint32_t format) {
  for (const Target& target : kTargets) {
    if (target.format == format) return &target;
  }
  return nullptr;
}

class Writer {
 public:
  explicit Writer(void* out) : out_(static_cast<uint8_t*>(out)) {}
  void Byte(uint32_t value) { *out_++ = static_cast<uint8_t>(value); }
  void Sample(uint32_t value, bool word) {
    Byte(value);
    if (word) Byte(value >> 8);
  }

 private:
  uint8_t* out_;
};

void WriteGroup(Writer& out, const Target& target, const std::vector<Sums>& pixels) {
  const Sums& p = pixels.front();
  const bool word = target.extra_bits > 0;
  const auto channel = [&](int32_t value) {
    out.Sample(static_cast<uint32_t>(value) << target.extra_bits, word);
  };
  switch (target.kind) {
    case Target::Kind::kLuma:
      out.Sample(Luma(p, target.extra_bits), word);
      return;
    case Target::Kind::kRgb:
      channel(p.r), channel(p.g), channel(p.b);
      return;
    case Target::Kind::kBgr:
      channel(p.b), channel(p.g), channel(p.r);
      return;
    case Target::Kind::kYuv:
      break;
  }
  Sums sums{0, 0, 0};
  for (const Sums& pixel : pixels) {
    sums.b += pixel.b;
    sums.g += pixel.g;
    sums.r += pixel.r;
  }
  // U, the first half of the lumas, V, the other half; one pixel alone counts to the first half.
  const size_t half = (pixels.size() + 1) / 2;
  const int count = static_cast<int>(pixels.size());
  out.Byte(ChromaU(sums, count));
  for (size_t i = 0; i < half; ++i) out.Byte(Luma(pixels[i], 0));
  out.Byte(ChromaV(sums, count));
  for (size_t i = half; i < pixels.size(); ++i) out.Byte(Luma(pixels[i], 0));
}

}  // namespace

void MakeBayer(BayerDepths depths, void* dst, const void* src, const int32_t (&channels)[4], uint32_t width,
               uint32_t height, uint32_t samples_per_pixel, bool pad) {
  const bool words = depths.from > 8;
  size_t pitch = size_t{width} * samples_per_pixel;
  if (pad) pitch = words ? (pitch + 1) / 2 * 2 : (pitch + 3) / 4 * 4;
  Writer out(dst);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const size_t at = y * pitch + size_t{x} * samples_per_pixel + channels[x % 2 * 2 + y % 2];
      const uint32_t sample = words ? WordAt(src, at) : ByteAt(src, at);
      out.Sample(depths.to >= depths.from ? sample << (depths.to - depths.from)
                                          : sample >> (depths.from - depths.to),
                 depths.to > 8);
    }
  }
}

size_t RawBytes(uint32_t format, uint32_t width, uint32_t height) {
  const Target* target = Find(format);
  return target ? size_t{width} * height / target->group_pixels * target->group_bytes : 0;
}

bool MakeRaw(uint32_t format, void* dst, const void* src, uint32_t pixel_bytes, uint32_t width,
             uint32_t height, bool pad) {
  const Target* target = Find(format);
  if (!target) return false;
  const size_t pitch = size_t{width} * pixel_bytes + (pad ? PadBytes(width * pixel_bytes) : 0);
  Writer out(dst);
  std::vector<Sums> pixels;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const size_t at = y * pitch + size_t{x} * pixel_bytes;
      pixels.push_back({ByteAt(src, at), ByteAt(src, at + 1), ByteAt(src, at + 2)});
      if (pixels.size() < target->group_pixels) continue;
      WriteGroup(out, *target, pixels);
      pixels.clear();
    }
  }
  return true;
}

}  // namespace prismo::reference

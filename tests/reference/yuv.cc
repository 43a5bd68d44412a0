#include "reference/yuv.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "reference/row_split.h"

namespace prismo::reference {
namespace {

uint8_t ToByte(double value) { return static_cast<uint8_t>(std::clamp(static_cast<int32_t>(value), 0, 255)); }

// Where a group keeps the luma of its pixels, its U and its V.
struct Group {
  uint32_t luma[4], u, v;
};

Group GroupOf(YuvLayout layout) {
  switch (layout) {
    case YuvLayout::k411:
      return {{1, 2, 4, 5}, 0, 3};
    case YuvLayout::k422:
      return {{1, 3, 0, 0}, 0, 2};
    case YuvLayout::k444:
      break;
  }
  return {{1, 0, 0, 0}, 0, 2};
}

// Groups from the front of src to pixels from the front of dst.
void ConvertStream(YuvLayout layout, Output output, uint8_t* dst, const uint8_t* src, uint64_t groups,
                   Tables tables) {
  const Group group = GroupOf(layout);
  const size_t pixel_bytes = Picture::PixelBytes(output);
  for (uint64_t i = 0; i < groups; ++i, src += GroupBytes(layout)) {
    for (uint32_t k = 0; k < GroupPixels(layout); ++k, dst += pixel_bytes) {
      std::memset(dst, 0, pixel_bytes);
      if (tables == Tables::kNeverBuilt) continue;
      const Pixel pixel = YuvPixel(src[group.luma[k]], src[group.u], src[group.v]);
      dst[0] = pixel.b;
      dst[1] = pixel.g;
      dst[2] = pixel.r;
      if (output == Output::kBgra) dst[3] = 255;
    }
  }
}

}  // namespace

uint32_t GroupPixels(YuvLayout layout) {
  return layout == YuvLayout::k411 ? 4 : layout == YuvLayout::k422 ? 2 : 1;
}

uint32_t GroupBytes(YuvLayout layout) {
  return layout == YuvLayout::k411 ? 6 : layout == YuvLayout::k422 ? 4 : 3;
}

uint32_t YuvRowBytes(YuvLayout layout, uint32_t width) {
  return layout == YuvLayout::k411 ? 3 * width / 2 : layout == YuvLayout::k422 ? 2 * width : 3 * width;
}

int32_t GreenOffset(int32_t a, int32_t b) {
  // Each product and their sum are rounded to single precision; only then come the double 256.5.
  const volatile float first = 0.344f * static_cast<float>(a);
  const volatile float second = 0.714f * static_cast<float>(b);
  const volatile float sum = first + second;
  const int32_t offset = static_cast<int32_t>(static_cast<double>(sum) + 256.5);
  return std::min(offset & 0xFFFF, 511);
}

Pixel YuvPixel(uint8_t y, uint8_t u, uint8_t v) {
  struct Values {
    std::array<int32_t, 65536> green_offset;  // by U and V
    std::array<uint8_t, 65536> blue, red;     // by chroma and Y
  };
  static const auto values = [] {
    auto all = std::make_unique<Values>();
    for (int32_t chroma = 0; chroma < 256; ++chroma) {
      const volatile double blue = 1.772 * (chroma - 128);
      const volatile double red = 1.402 * (chroma - 128);
      for (int32_t low = 0; low < 256; ++low) {
        const auto at = static_cast<size_t>(chroma * 256 + low);
        all->green_offset[at] = GreenOffset(chroma - 128, low - 128);
        all->blue[at] = ToByte(blue + low + 0.5);
        all->red[at] = ToByte(red + low + 0.5);
      }
    }
    return all;
  }();
  const int32_t green = 256 - values->green_offset[u * 256u + v] + y;
  return {values->blue[u * 256u + y], static_cast<uint8_t>(std::clamp(green, 0, 255)),
          values->red[v * 256u + y]};
}

void ConvertYuv(YuvLayout layout, Output output, void* dst, const void* src, uint32_t width, uint32_t height,
                Tables tables) {
  auto* out = static_cast<uint8_t*>(dst);
  const auto* in = static_cast<const uint8_t*>(src);
  const uint32_t pad = PadBytes(3 * width);
  if (output != Output::kPad || pad == 0) {
    ConvertStream(layout, output, out, in, width * height / GroupPixels(layout), tables);
    return;
  }
  for (uint32_t y = 0; y < height; ++y) {
    const uint32_t groups = width / GroupPixels(layout);
    ConvertStream(layout, output, out, in, groups, tables);
    out += 3 * groups * GroupPixels(layout);
    std::memset(out, 0, pad);
    out += pad;
    in += YuvRowBytes(layout, width);
  }
}

uint32_t PooledConvertYuv(YuvLayout layout, Output output, void* dst, const void* src, uint32_t width,
                          uint32_t height, int32_t threads, Tables tables) {
  const Picture picture(dst, output, width);
  const RowSplit split = SplitRows(0, static_cast<int32_t>(height) - 1, threads, 2);
  for (const Rows& rows : split.blocks) {
    for (int32_t i = 0; i < rows.count; ++i) {
      const uint32_t y = static_cast<uint32_t>(rows.first + i);
      const auto* row = static_cast<const uint8_t*>(src) + size_t{y} * YuvRowBytes(layout, width);
      ConvertStream(layout, output, picture.At(0, y), row, width / GroupPixels(layout), tables);
      picture.ZeroPad(y);
    }
  }
  return split.Status();
}

}  // namespace prismo::reference

#include "reference/mirror.h"

#include <cstddef>

namespace prismo::reference {
namespace {

const std::vector<MirrorUnit>& Units() {
  static const std::vector<MirrorUnit> units = [] {
    std::vector<MirrorUnit> all;
    for (const uint32_t format : {0x01080001u, 0x01080008u, 0x01080009u, 0x0108000Au, 0x0108000Bu}) {
      all.push_back({format, 1, {0}});
    }
    for (const uint32_t format :
         {0x01100003u, 0x01100005u, 0x01100007u, 0x0110000Cu, 0x0110000Du, 0x0110000Eu, 0x0110000Fu,
          0x01100010u, 0x01100011u, 0x01100012u, 0x01100013u}) {
      all.push_back({format, 1, {0, 1}});
    }
    for (const uint32_t format : {0x02180014u, 0x02180015u, 0x02180020u})
      all.push_back({format, 1, {0, 1, 2}});
    for (const uint32_t format : {0x02300018u, 0x02300019u, 0x0230001Au, 0x0230001Bu}) {
      all.push_back({format, 1, {0, 1, 2, 3, 4, 5}});
    }
    all.push_back({0x0210001Fu, 2, {0, 3, 2, 1}});
    all.push_back({0x020C001Eu, 4, {0, 5, 4, 3, 2, 1}});
    return all;
  }();
  return units;
}

}  // namespace

const MirrorUnit* MirrorUnitOf(uint32_t format) {
  for (const MirrorUnit& unit : Units()) {
    if (unit.format == format) return &unit;
  }
  return nullptr;
}

std::vector<uint32_t> MirrorFormats() {
  std::vector<uint32_t> formats;
  for (const MirrorUnit& unit : Units()) formats.push_back(unit.format);
  return formats;
}

uint32_t MirrorRowBytes(const MirrorUnit& unit, uint32_t width) {
  return width / unit.pixels * static_cast<uint32_t>(unit.order.size());
}

void Mirror(const MirrorUnit& unit, void* dst, const void* src, uint32_t width, uint32_t height,
            bool horizontal, bool vertical) {
  const size_t bytes = unit.order.size();
  const uint32_t units = width / unit.pixels;
  for (uint32_t y = 0; y < height; ++y) {
    const uint32_t from_y = vertical ? height - 1 - y : y;
    for (uint32_t x = 0; x < units; ++x) {
      const uint32_t from_x = horizontal ? units - 1 - x : x;
      auto* out = static_cast<uint8_t*>(dst) + (size_t{y} * units + x) * bytes;
      const auto* in = static_cast<const uint8_t*>(src) + (size_t{from_y} * units + from_x) * bytes;
      for (size_t i = 0; i < bytes; ++i) out[i] = in[horizontal ? unit.order[i] : i];
    }
  }
}

}  // namespace prismo::reference

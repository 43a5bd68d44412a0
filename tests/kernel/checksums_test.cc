// What every build makes of the same frames, to the last byte: all formats, methods and layouts, on every
// instruction set, on the caller's thread and on the pool. The table is the same for all systems.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "support/formats.h"
#include "support/generators.h"
#include "support/pool.h"
#include "support/targets.h"

namespace prismo::test {
namespace {

using Buffer = std::vector<uint8_t>;
using Checksums = std::map<std::string, std::string>;

constexpr uint32_t kHeight = 70;
// No multiple of 4 where the format allows that: rows end in partial vectors and are padded.
uint32_t WidthOf(uint32_t format) { return format == PRISMO_YUV411 ? 264 : 262; }

uint32_t WidestSample(uint32_t format) {
  switch (format) {
    case PRISMO_MONO16:
      return 16;
    case PRISMO_BGRA10:
      return 10;
    default:
      return std::max<uint32_t>(8, DataDepth(format));
  }
}

// Bands of a slope with little noise, and bands of noise.
Buffer Frame(size_t row_bytes, uint32_t bits) {
  Random random(0x5EEDED);
  const size_t sample_bytes = bits > 8 ? 2 : 1;
  Buffer frame;
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < row_bytes / sample_bytes; ++x) {
      const auto noise = static_cast<uint32_t>(random.Next() >> 32);
      const uint32_t slope = (x + 2 * y + noise % 4) << (bits - 8);
      const uint32_t sample = (y / 10 % 2 ? noise : slope) & ((1u << bits) - 1);
      frame.push_back(static_cast<uint8_t>(sample));
      if (sample_bytes == 2) frame.push_back(static_cast<uint8_t>(sample >> 8));
    }
  }
  return frame;
}

Buffer FrameOf(uint32_t format) { return Frame(BytesOfRow(format, WidthOf(format)), WidestSample(format)); }

// 64-bit FNV-1a.
std::string ChecksumOf(const Buffer& bytes) {
  uint64_t sum = 0xCBF29CE484222325;
  for (const uint8_t byte : bytes) sum = (sum ^ byte) * 0x100000001B3;
  std::ostringstream text;
  text << std::hex << std::setfill('0') << std::setw(16) << sum;
  return text.str();
}

std::string ResultOf(size_t bytes, const std::function<uint32_t(uint8_t*)>& call) {
  Buffer dst(bytes);
  const uint32_t status = call(dst.data());
  return status == UTL_STS_SUCCESS ? ChecksumOf(dst) : "status " + std::to_string(status);
}

struct Layout {
  const char* name;
  uint32_t type;
  size_t BytesOfRow(uint32_t width) const {
    return type == 0 ? 4 * size_t{width} : type == 1 ? 3 * size_t{width} : (3 * size_t{width} + 3) / 4 * 4;
  }
};
constexpr Layout kLayouts[] = {{"BGRA", 0}, {"BGR", 1}, {"padded", 2}};

struct Method {
  const char* name;
  uint32_t number;
};
constexpr Method kMethods[] = {{"bilinear", 0}, {"adaptive", 1}, {"grey", 8}};

void AddPictures(const NamedFormat& format, bool pool, Checksums& sums) {
  const uint32_t width = WidthOf(format.code);
  const Buffer frame = FrameOf(format.code);
  for (const Layout& layout : kLayouts) {
    const size_t bytes = layout.BytesOfRow(width) * kHeight;
    if (format.code == PRISMO_BGRA8) {  // which only ConvImage takes
      SetProcMode(pool);
      sums[format.name + " direct " + layout.name] = ResultOf(bytes, [&](uint8_t* dst) {
        return ConvImage(layout.type, format.code, 0, dst, frame.data(), width, kHeight);
      });
      continue;
    }
    for (const Method& method : kMethods) {
      const bool bayer = IsPixelBayer(format.code);
      if (!bayer && method.number != 0) continue;
      sums[format.name + ' ' + (bayer ? method.name : "direct") + ' ' + layout.name] =
          ResultOf(bytes, [&](uint8_t* dst) {
            return ConvImageEx(layout.type, format.code, dst, frame.data(), width, kHeight, method.number,
                               pool);
          });
    }
  }
}

void AddPlanes(const NamedFormat& format, bool pool, Checksums& sums) {
  const uint32_t width = WidthOf(format.code);
  const size_t plane = size_t{width} * kHeight;
  const Buffer frame = FrameOf(format.code);
  sums[format.name + " planes BGR"] = ResultOf(3 * plane, [&](uint8_t* dst) {
    return ConvImagePlanarEx(format.code, dst, dst + plane, dst + 2 * plane, frame.data(), width, kHeight,
                             pool, 0);
  });
}

void AddMirrors(const NamedFormat& format, bool pool, Checksums& sums) {
  const auto mirror = pool ? &RvrsImg_MP : &RvrsImg_SP;
  const Buffer frame = FrameOf(format.code);
  for (const auto& [name, horizontal, vertical] :
       {std::tuple("horizontal", 1, 0), std::tuple("vertical", 0, 1), std::tuple("both", 1, 1)}) {
    sums[format.name + " mirror " + name] = ResultOf(frame.size(), [&](uint8_t* dst) {
      return mirror(dst, frame.data(), format.code, WidthOf(format.code), kHeight,
                    static_cast<uint8_t>(horizontal), static_cast<uint8_t>(vertical));
    });
  }
}

void AddSynthesis(const NamedFormat& format, Checksums& sums) {
  const uint32_t width = WidthOf(format.code);
  for (const uint32_t source : {PRISMO_BGR8, PRISMO_BGRA8}) {
    const Buffer picture = Frame(BytesOfRow(source, width), 8);
    sums[format.name + " made-of " + (source == PRISMO_BGR8 ? "BGR" : "BGRA")] = ResultOf(
        BytesOfRow(format.code, width) * kHeight,
        [&](uint8_t* dst) { return ToRaw(dst, picture.data(), format.code, source, width, kHeight, 0); });
  }
}

void AddMosaics(Checksums& sums) {
  constexpr int32_t kSites[] = {2, 1, 1, 0};
  struct Maker {
    const char* name;
    decltype(&ToBayer8to8) make;
    uint32_t source_bits;
    size_t sample_bytes;
  };
  for (const Maker& maker :
       {Maker{"8to8", &ToBayer8to8, 8, 1}, Maker{"8to10", &ToBayer8to10, 8, 2},
        Maker{"8to12", &ToBayer8to12, 8, 2}, Maker{"10to8", &ToBayer10to8, 10, 1},
        Maker{"10to10", &ToBayer10to10, 10, 2}, Maker{"10to12", &ToBayer10to12, 10, 2}}) {
    const uint32_t width = WidthOf(PRISMO_BGR8);
    const Buffer picture = Frame(size_t{3} * width * (maker.source_bits > 8 ? 2 : 1), maker.source_bits);
    sums[std::string("mosaic ") + maker.name + " BGR"] =
        ResultOf(maker.sample_bytes * width * kHeight, [&](uint8_t* dst) {
          return maker.make(dst, picture.data(), kSites, static_cast<int32_t>(width), kHeight, 3, 0);
        });
  }
}

Checksums AllChecksums(bool pool) {
  Checksums sums;
  for (const NamedFormat& format : AllFormats()) {
    AddPictures(format, pool, sums);
    AddPlanes(format, pool, sums);
    AddMirrors(format, pool, sums);
    AddSynthesis(format, sums);
  }
  AddMosaics(sums);
  return sums;
}

// Lines of three words that name a conversion, and its result.
Checksums ReadTable() {
  std::ifstream file(PRISMO_CHECKSUM_TABLE);
  Checksums table;
  std::string what, how, layout, result;
  while (file >> what >> how >> layout && std::getline(file >> std::ws, result)) {
    if (result.ends_with('\r')) result.pop_back();
    table[what + ' ' + how + ' ' + layout] = result;
  }
  return table;
}

void WriteTable(const char* path, const Checksums& sums) {
  std::ofstream file(path);
  for (const auto& [name, result] : sums) file << name << ' ' << result << '\n';
}

void ExpectTable(bool pool) {
  const Checksums table = ReadTable();
  ASSERT_GT(table.size(), 300u) << PRISMO_CHECKSUM_TABLE;
  ForEachTarget([&] {
    const Checksums sums = AllChecksums(pool);
    EXPECT_EQ(sums.size(), table.size());
    for (const auto& [name, result] : table) {
      const auto found = sums.find(name);
      EXPECT_EQ(found == sums.end() ? "nothing" : found->second, result) << name;
    }
  });
}

class Checksum : public PoolTest {};

TEST_F(Checksum, OnTheCaller) {
  // A table for changes that are meant to change pictures, to be looked at line by line.
  if (const char* path = std::getenv("PRISMO_WRITE_CHECKSUMS")) WriteTable(path, AllChecksums(false));
  ExpectTable(false);
}

TEST_F(Checksum, OnThePool) {
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads));
    ExpectTable(true);
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace prismo::test

#include "reference/colour.h"

#include <cstring>

#include "reference/row_split.h"

namespace prismo::reference {
namespace {

void PutWord(uint8_t* out, uint32_t word) {
  for (int i = 0; i < 4; ++i) out[i] = static_cast<uint8_t>(word >> 8 * i);
}

uint32_t BgraWord(const PackedFrame& frame, const PackedFrame::Samples& s, Excess excess) {
  const uint32_t mask = excess == Excess::kKept ? 0xFFFFFFFFu : 0xFFu;
  if (frame.order == PackedFrame::Order::kGrey) return GreyWord(s.g & mask);
  return (s.b & mask) | (s.g & mask) << 8 | (s.r & mask) << 16 | 0xFF000000u;
}

void SplitRow(const PackedFrame& frame, bool pad, const Planes& planes, uint32_t y) {
  const size_t pitch = PlanePitch(frame.width, pad);
  for (uint32_t x = 0; x < pitch; ++x) {
    const PackedFrame::Samples s = x < frame.width ? frame.At(x, y) : PackedFrame::Samples{0, 0, 0};
    planes.b[y * pitch + x] = static_cast<uint8_t>(s.b);
    planes.g[y * pitch + x] = static_cast<uint8_t>(s.g);
    planes.r[y * pitch + x] = static_cast<uint8_t>(s.r);
  }
}

RowSplit PairedRows(uint32_t height, int32_t threads) {
  return SplitRows(0, static_cast<int32_t>(height) - 1, threads, 2);
}

}  // namespace

PackedFrame::Samples PackedFrame::At(uint32_t x, uint32_t y) const {
  const auto sample = [&](size_t index) {
    return words ? ShiftRight(WordAt(samples, index), shift) : uint32_t{ByteAt(samples, index)};
  };
  const size_t pixel = size_t{y} * width + x;
  switch (order) {
    case Order::kBgr:
      return {sample(3 * pixel), sample(3 * pixel + 1), sample(3 * pixel + 2)};
    case Order::kRgb:
      return {sample(3 * pixel + 2), sample(3 * pixel + 1), sample(3 * pixel)};
    case Order::kBgra:
      return {sample(4 * pixel), sample(4 * pixel + 1), sample(4 * pixel + 2)};
    case Order::kGrey:
      break;
  }
  return {sample(pixel), sample(pixel), sample(pixel)};
}

void ConvertRows(const PackedFrame& frame, Output output, Excess excess, void* dst, Rows rows) {
  const Picture picture(dst, output, frame.width);
  for (int32_t i = 0; i < rows.count; ++i) {
    const uint32_t y = static_cast<uint32_t>(rows.first + i);
    for (uint32_t x = 0; x < frame.width; ++x) {
      const PackedFrame::Samples s = frame.At(x, y);
      if (output == Output::kBgra && frame.order == PackedFrame::Order::kBgra) {
        const size_t pixel = size_t{y} * frame.width + x;
        std::memcpy(picture.At(x, y), static_cast<const uint8_t*>(frame.samples) + 4 * pixel,
                    4);  // alpha too
      } else if (output == Output::kBgra) {
        PutWord(picture.At(x, y), BgraWord(frame, s, excess));
      } else {
        picture.Put(x, y, {static_cast<uint8_t>(s.b), static_cast<uint8_t>(s.g), static_cast<uint8_t>(s.r)});
      }
    }
    picture.ZeroPad(y);
  }
}

void Convert(const PackedFrame& frame, Output output, void* dst, uint32_t height) {
  ConvertRows(frame, output, Excess::kDropped, dst, {0, static_cast<int32_t>(height)});
}

uint32_t PooledConvert(const PackedFrame& frame, Output output, void* dst, uint32_t height, int32_t threads) {
  const RowSplit split = PairedRows(height, threads);
  const Excess excess = output == Output::kBgra ? Excess::kKept : Excess::kDropped;
  for (const Rows& rows : split.blocks) ConvertRows(frame, output, excess, dst, rows);
  return split.Status();
}

void ReduceToMono8(const PackedFrame& frame, bool pad, void* dst, uint32_t height) {
  const size_t pitch = PlanePitch(frame.width, pad);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < pitch; ++x) {
      static_cast<uint8_t*>(dst)[y * pitch + x] =
          x < frame.width ? static_cast<uint8_t>(frame.At(x, y).g) : uint8_t{0};
    }
  }
}

void Split(const PackedFrame& frame, bool pad, const Planes& planes, uint32_t height) {
  for (uint32_t y = 0; y < height; ++y) SplitRow(frame, pad, planes, y);
}

uint32_t PooledSplit(const PackedFrame& frame, bool pad, const Planes& planes, uint32_t height,
                     int32_t threads) {
  const RowSplit split = PairedRows(height, threads);
  for (const Rows& rows : split.blocks) {
    for (int32_t i = 0; i < rows.count; ++i)
      SplitRow(frame, pad, planes, static_cast<uint32_t>(rows.first + i));
  }
  return split.Status();
}

}  // namespace prismo::reference

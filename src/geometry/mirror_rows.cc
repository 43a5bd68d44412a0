#include "geometry/mirror_rows.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/mirror_rows.cc"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "hwy/highway.h"
#include "simd/block_order-inl.h"
#include "simd/rearrange-inl.h"
#include "simd/target_tables.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {
namespace {

// Byte i of a mirrored unit is byte kOrder[i] of the unit.
struct ByteUnit {
  static constexpr uint8_t kOrder[] = {0};
};
struct WordUnit {
  static constexpr uint8_t kOrder[] = {0, 1};
};
struct Bytes3Unit {
  static constexpr uint8_t kOrder[] = {0, 1, 2};
};
struct Yuv422Unit {
  static constexpr uint8_t kOrder[] = {0, 3, 2, 1};
};
struct Yuv411Unit {
  static constexpr uint8_t kOrder[] = {0, 5, 4, 3, 2, 1};
};
struct Words3Unit {
  static constexpr uint8_t kOrder[] = {0, 1, 2, 3, 4, 5};
};

inline constexpr size_t kLine = 64;
template <class Unit>
inline constexpr size_t kUnitBytes = std::size(Unit::kOrder);

// Whole units that fill whole cache lines, so that streaming stores leave no line half written.
template <class Unit>
inline constexpr size_t kBlockBytes = kUnitBytes<Unit> % 3 == 0 ? 3 * kLine : kLine;

template <class Unit>
struct Mirrored {
  static constexpr size_t kIn = kBlockBytes<Unit>;
  static constexpr size_t kOut = kBlockBytes<Unit>;

  static constexpr size_t SourceOf(size_t i) {
    constexpr size_t kUnit = kUnitBytes<Unit>;
    return kIn - kUnit * (i / kUnit + 1) + Unit::kOrder[i % kUnit];
  }
};

#if HWY_TARGET != HWY_SCALAR

// Bytes of two rows that meet within a block, `seam` bytes behind its start. The vectors lie `first` bytes
// behind it.
HWY_INLINE V8 AcrossSeam(size_t seam, size_t first, V8 before, V8 behind) {
  const auto is_before = hn::FirstN(D8(), std::min(std::max(seam, first) - first, kLanes));
  return hn::IfThenElse(is_before, before, behind);
}

template <class Unit, size_t kVector = 0>
HWY_INLINE void MirrorSeam(uint8_t* to, const uint8_t* before, const uint8_t* behind, size_t seam) {
  constexpr size_t kFirst = kVector * kLanes;
  const V8 mirrored = AcrossSeam(seam, kFirst, Rearranged<Mirrored<Unit>, kVector>(before),
                                 Rearranged<Mirrored<Unit>, kVector>(behind));
  hn::Stream(mirrored, D8(), to + kFirst);
  if constexpr (kFirst + kLanes < kBlockBytes<Unit>) MirrorSeam<Unit, kVector + 1>(to, before, behind, seam);
}

#endif

// Writes bytes `first` to `first + count - 1` of the mirrored image of a block to `to`.
template <class Unit>
HWY_INLINE void MirrorPart(uint8_t* to, const uint8_t* from, size_t first, size_t count) {
  alignas(64) uint8_t block[kBlockBytes<Unit>];
  Rearrange<Mirrored<Unit>, StoreKind::kCached>(block, from);
  std::memcpy(to, block + first, count);
}

[[maybe_unused]] constexpr size_t kPrefetchInShortRows = 1024;  // not where there are no wide vectors

// Bytes to go down from `end` in steps of a unit to the start of a cache line: fewer than a block, or a block
// when there is no such place.
template <class Unit>
HWY_INLINE size_t BytesDownToLine(const uint8_t* end) {
  constexpr size_t kOdd = kUnitBytes<Unit> % 3 == 0 ? 3 : 1, kEven = kUnitBytes<Unit> / kOdd;
  constexpr size_t kInverse = kOdd == 3 ? 43 : 1;  // 3 x 43 = 129 = 1 modulo 64
  const auto address = reinterpret_cast<uintptr_t>(end);
  if (address % kEven != 0) return kBlockBytes<Unit>;
  return kUnitBytes<Unit> * (address / kEven * kInverse % (kLine / kEven));
}

// Plain stores find their lines in the near cache if these were fetched for writing before: in the next row,
// or, where a row fills much of the cache, further down in the same one. Twice as fast at 5 megapixels.
ptrdiff_t PrepareDistance(size_t row_bytes, size_t rows) {
  constexpr ptrdiff_t kLong = 4096;
  return rows > 1 && row_bytes <= 2 * kLong ? static_cast<ptrdiff_t>(row_bytes) : -kLong;
}

// The source is read upwards, which processors foresee best, and the output is written from its end
// downwards. Blocks that overlap make up for ends that are not aligned.
template <class Unit>
HWY_INLINE void MirrorRun(uint8_t* dst, const uint8_t* src, size_t bytes, ptrdiff_t prepare) {
  constexpr size_t kBlock = kBlockBytes<Unit>;
  if (bytes < kBlock) {
    alignas(64) uint8_t block[kBlock] = {};
    std::memcpy(block, src, bytes);
    return MirrorPart<Unit>(dst, block, kBlock - bytes, bytes);
  }
  const auto block = [&](size_t x) HWY_ATTR {
    uint8_t* const to = dst + bytes - x - kBlock;
    for (size_t line = 0; line < kBlock; line += kLine) __builtin_prefetch(to + line + prepare, 1);
    Rearrange<Mirrored<Unit>, StoreKind::kCached>(to, src + x);
  };
  size_t x = BytesDownToLine<Unit>(dst + bytes);
  if (x > 0) block(0);
  for (; x + kBlock <= bytes; x += kBlock) block(x);
  if (x < bytes) block(bytes - kBlock);
}

template <class Unit>
void Mirror(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t rows) {
  const ptrdiff_t prepare = PrepareDistance(row_bytes, rows);
  for (size_t y = 0; y < rows; ++y) {
    MirrorRun<Unit>(dst + y * row_bytes, src + y * row_bytes, row_bytes, prepare);
  }
}

// Rows that do not start at a cache line meet within one: such a block is put together of both rows, so that
// plain stores remain only where a neighbour is missing.
template <class Unit>
void MirrorStreaming(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t rows) {
#if HWY_TARGET == HWY_SCALAR
  Mirror<Unit>(dst, src, row_bytes, rows);
#else
  constexpr size_t kBlock = kBlockBytes<Unit>;
  if (row_bytes < 2 * kBlock || BytesDownToLine<Unit>(dst) == kBlock) {
    return Mirror<Unit>(dst, src, row_bytes, rows);
  }
  const auto row_start = [&](size_t y, size_t count) HWY_ATTR {
    MirrorPart<Unit>(dst + y * row_bytes, src + (y + 1) * row_bytes - kBlock, 0, count);
  };
  size_t start =
      (row_bytes - BytesDownToLine<Unit>(dst + row_bytes)) % kBlock;  // written before or by a seam
  row_start(0, start);
  for (size_t y = 0; y < rows; ++y) {
    uint8_t* const end = dst + (y + 1) * row_bytes;
    const uint8_t* from = src + y * row_bytes;
    const size_t head = BytesDownToLine<Unit>(end);
    const size_t blocks = (row_bytes - start - head) / kBlock;
    AtSeveralPlaces<kBlock, kBlock>(
        blocks,
        [&](size_t block, size_t ahead) PRISMO_INLINE {
          const size_t x = head + block * kBlock;
          for (size_t line = 0; line < kBlock; line += kLine) hwy::Prefetch(from + x + line + ahead);
          Rearrange<Mirrored<Unit>, StoreKind::kStreaming>(end - x - kBlock, from + x);
        },
        kPrefetchInShortRows);
    start = (kBlock - head) % kBlock;
    if (head == 0) continue;
    if (y > 0 && y + 2 < rows) {
      MirrorSeam<Unit>(end - head, from - start, from + 2 * row_bytes - start, head);
    } else {
      MirrorPart<Unit>(end - head, from, start, head);
      if (y + 1 < rows) row_start(y + 1, start);
    }
  }
#endif
}

void Flip(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t rows) {
  for (size_t y = 0; y < rows; ++y) {
    uint8_t* const to = dst + (rows - 1 - y) * row_bytes;
    const uint8_t* const from = src + y * row_bytes;
    size_t x = 0;
#if HWY_TARGET != HWY_SCALAR
    // The line that is written next is fetched for writing a row before.
    const uint8_t* const next_row = y + 1 < rows ? to - row_bytes : nullptr;
    for (; next_row && x + kLine <= row_bytes; x += kLine) {
      __builtin_prefetch(next_row + x, 1);
      for (size_t i = 0; i < kLine; i += kLanes) hn::StoreU(hn::LoadU(D8(), from + x + i), D8(), to + x + i);
    }
#endif
    std::memcpy(to + x, from + x, row_bytes - x);
  }
}

void FlipStreaming(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t rows) {
#if HWY_TARGET == HWY_SCALAR
  Flip(dst, src, row_bytes, rows);
#else
  if (row_bytes < 2 * kLine) return Flip(dst, src, row_bytes, rows);
  const D8 d8;
  const auto row_end = [&](size_t y, size_t count) {
    std::memcpy(dst + (rows - y) * row_bytes - count, src + (y + 1) * row_bytes - count, count);
  };
  size_t end = reinterpret_cast<uintptr_t>(dst + rows * row_bytes) % kLine;  // written before or by a seam
  row_end(0, end);
  for (size_t y = 0; y < rows; ++y) {
    uint8_t* to = dst + (rows - 1 - y) * row_bytes;
    const uint8_t* from = src + y * row_bytes;
    const size_t next_end = reinterpret_cast<uintptr_t>(to) % kLine;
    const size_t start = (kLine - next_end) % kLine;
    if (y > 0 && y + 2 < rows) {
      for (size_t i = 0; i < kLine && start > 0; i += kLanes) {
        const V8 next_row = hn::LoadU(d8, from + 2 * row_bytes - next_end + i);
        hn::Stream(AcrossSeam(next_end, i, next_row, hn::LoadU(d8, from - next_end + i)), d8,
                   to - next_end + i);
      }
    } else {
      std::memcpy(to, from, start);
      if (y + 1 < rows) row_end(y + 1, next_end);
    }
    const size_t lines = (row_bytes - end - start) / kLine;
    AtSeveralPlaces<kLine, kLine>(
        lines,
        [&](size_t line, size_t ahead) PRISMO_INLINE {
          const size_t x = start + line * kLine;
          hwy::Prefetch(from + x + ahead);
          for (size_t i = x; i < x + kLine; i += kLanes) hn::Stream(hn::LoadU(d8, from + i), d8, to + i);
        },
        kPrefetchInShortRows);
    end = next_end;
  }
#endif
}

template <class Unit>
constexpr void Fill(MirrorKernels& kernels, MirrorUnit unit) {
  auto& mirror = kernels.mirror[static_cast<size_t>(unit)];
  mirror[0] = &Mirror<Unit>;
  mirror[1] = &MirrorStreaming<Unit>;
}

constexpr MirrorKernels MakeTable() {
  MirrorKernels kernels{};
  Fill<ByteUnit>(kernels, MirrorUnit::kByte);
  Fill<WordUnit>(kernels, MirrorUnit::kWord);
  Fill<Bytes3Unit>(kernels, MirrorUnit::kBytes3);
  Fill<Yuv422Unit>(kernels, MirrorUnit::kYuv422);
  Fill<Yuv411Unit>(kernels, MirrorUnit::kYuv411);
  Fill<Words3Unit>(kernels, MirrorUnit::kWords3);
  kernels.flip[0] = &Flip;
  kernels.flip[1] = &FlipStreaming;
  return kernels;
}

}  // namespace

const MirrorKernels& MirrorTable() {
  static constexpr MirrorKernels kKernels = MakeTable();
  return kKernels;
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prismo {

const MirrorKernels& CurrentMirrorKernels() {
  static constexpr simd::TargetTables<MirrorKernels> kTables{PRISMO_TARGET_TABLES(MirrorTable)};
  return kTables.Current();
}

}  // namespace prismo
#endif

// Names and small operations that all kernels share. Compiled once per instruction set.
#if defined(PRISMO_SIMD_VECTORS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SIMD_VECTORS_INL_H_
#undef PRISMO_SIMD_VECTORS_INL_H_
#else
#define PRISMO_SIMD_VECTORS_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "hwy/highway.h"
#include "simd/cache_line.h"
#include "simd/stores.h"
#include "simd/targets.h"

// For lambdas in inner loops: without it GCC calls them and passes vectors through memory.
#undef PRISMO_INLINE
#define PRISMO_INLINE HWY_ATTR __attribute__((always_inline))

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using simd::StoreKind;

// One vector of bytes is one block of pixels; 16-bit samples come as two vectors of words.
using D8 = hn::ScalableTag<uint8_t>;
using D16 = hn::ScalableTag<uint16_t>;
using D32 = hn::ScalableTag<uint32_t>;
using DI16 = hn::RebindToSigned<D16>;
using DI32 = hn::RebindToSigned<D32>;
using V8 = hn::Vec<D8>;
using V16 = hn::Vec<D16>;
using V32 = hn::Vec<D32>;
using VI16 = hn::Vec<DI16>;
using VI32 = hn::Vec<DI32>;
inline constexpr size_t kLanes = HWY_MAX_BYTES == 1 ? 1 : hn::MaxLanes(D8());

// Where the pixels of a block stand in the vectors that a sink is given: one after the other, or in each
// 128-bit lane first those at even places, then those at odd ones, as packing leaves them, or eight of each
// half of the block, as packing leaves two vectors of neighbours, or in each 32-bit lane four that are a
// quarter of the block apart, or in each 128-bit lane four neighbours of each quarter, as interleaving takes
// them.
enum class Order { kPixels, kHalves, kPacked, kFromQuarters, kAcross };

// The byte that holds a pixel.
template <Order kOrder>
constexpr size_t PlaceOf(size_t pixel) {
  constexpr size_t kQuarter = kLanes < 4 ? 1 : kLanes / 4;
  switch (kOrder) {
    case Order::kPixels:
      return pixel;
    case Order::kHalves:
      return pixel / 16 * 16 + pixel % 2 * 8 + pixel % 16 / 2;
    case Order::kPacked:
      return pixel % (2 * kQuarter) / 8 * 16 + pixel / (2 * kQuarter) * 8 + pixel % 8;
    case Order::kFromQuarters:
      return pixel % kQuarter * 4 + pixel / kQuarter;
    case Order::kAcross:
      return pixel % 16 / 4 * 16 + pixel / 16 * 4 + pixel % 4;
  }
}

// Permutes of bytes across whole vectors, which come with sums of products: they take pixels from anywhere at
// no extra cost.
#undef PRISMO_BYTE_PERMUTES
#define PRISMO_BYTE_PERMUTES (HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3_DL)
inline constexpr bool kBytePermutes = PRISMO_BYTE_PERMUTES;
constexpr Order CheapOrder(Order order) { return kBytePermutes ? order : Order::kPixels; }

#if HWY_TARGET == HWY_SCALAR
inline constexpr size_t kWordVectors = 1;  // vectors of words for one vector of bytes
#else
inline constexpr size_t kWordVectors = 2;

// The words of two vectors as bytes, clamped to 0 to 255. The 128-bit blocks of the arguments alternate in
// the result.
HWY_INLINE V8 ClampToBytes(VI16 even_blocks, VI16 odd_blocks) {
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return V8{_mm512_packus_epi16(even_blocks.raw, odd_blocks.raw)};
#elif HWY_TARGET == HWY_AVX2
  return V8{_mm256_packus_epi16(even_blocks.raw, odd_blocks.raw)};
#elif HWY_ARCH_X86
  return V8{_mm_packus_epi16(even_blocks.raw, odd_blocks.raw)};
#else
  const hn::Half<D8> half;
  return hn::Combine(D8(), hn::DemoteTo(half, odd_blocks), hn::DemoteTo(half, even_blocks));
#endif
}

// One byte of each 16-bit lane.
#if PRISMO_BYTE_PERMUTES
template <size_t kFirst, Order kOrder>
HWY_INLINE V8 EverySecondByte(V16 low, V16 high) {
  alignas(64) static constexpr auto kIndices = [] {
    struct {
      uint8_t index[64];
    } t{};
    for (size_t i = 0; i < 64; ++i) t.index[PlaceOf<kOrder>(i)] = static_cast<uint8_t>(2 * i + kFirst);
    return t;
  }();
  return V8{_mm512_permutex2var_epi8(low.raw, _mm512_load_si512(kIndices.index), high.raw)};
}
template <Order kOrder = Order::kPixels>
HWY_INLINE V8 LowBytes(V16 low, V16 high) {
  return EverySecondByte<0, kOrder>(low, high);
}
template <Order kOrder = Order::kPixels>
HWY_INLINE V8 HighBytes(V16 low, V16 high) {
  return EverySecondByte<1, kOrder>(low, high);
}
#else
HWY_INLINE V8 LowBytes(V16 low, V16 high) {
  return hn::ConcatEven(D8(), hn::BitCast(D8(), high), hn::BitCast(D8(), low));
}
template <Order kOrder = Order::kPixels>
HWY_INLINE V8 HighBytes(V16 low, V16 high) {
  static_assert(kOrder == Order::kPixels || kOrder == Order::kPacked);
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
  if constexpr (kOrder == Order::kPacked) {
    return ClampToBytes(hn::BitCast(DI16(), hn::ShiftRight<8>(low)),
                        hn::BitCast(DI16(), hn::ShiftRight<8>(high)));
  }
#endif
  return hn::ConcatOdd(D8(), hn::BitCast(D8(), high), hn::BitCast(D8(), low));
}
#endif
#endif

// A pointer or number that is loaded alone. Compilers like to load neighbours as one vector; where they were
// stored singly just before, that load waits until every store under way has reached memory, and streaming
// stores take long.
template <typename T>
HWY_INLINE T LoadedAlone(T scalar) {
  asm("" : "+r"(scalar));
  return scalar;
}

// Copies a part of what vectors were just stored to, in pieces that never cross from one vector to the next:
// such a load, too, waits until every store under way has reached memory.
HWY_INLINE void CopyStored(uint8_t* to, const uint8_t* from, size_t bytes) {
  const auto copy = [&](auto piece) HWY_ATTR {
    std::memcpy(&piece, from, sizeof(piece));
    asm("" : "+r"(piece));  // or the compiler finds a memcpy in the loops
    std::memcpy(to, &piece, sizeof(piece));
    to += sizeof(piece);
    from += sizeof(piece);
    bytes -= sizeof(piece);
  };
  while (bytes > 0 && reinterpret_cast<uintptr_t>(from) % 8 != 0) copy(uint8_t{});
  while (bytes >= 8) copy(uint64_t{});
  while (bytes > 0) copy(uint8_t{});
}

// A loaded vector with several uses. GCC loads it anew for each of them, as if loads across cache lines were
// free.
template <class V>
HWY_INLINE V LoadedOnce(V v) {
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
  asm("" : "+v"(v.raw));
#endif
  return v;
}

template <StoreKind kStores, class D, class V, typename T>
HWY_INLINE void Put(V v, D d, T* to) {
  if constexpr (kStores == StoreKind::kStreaming) {
    hn::Stream(v, d, to);
  } else {
    hn::StoreU(v, d, to);
  }
}

using simd::kCacheLine;

// As simd::PixelsToLine; without vectors nothing is streamed.
HWY_INLINE size_t PixelsToLine(const uint8_t* to, size_t pixel_bytes) {
  return kLanes == 1 ? 0 : simd::PixelsToLine(to, pixel_bytes);
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

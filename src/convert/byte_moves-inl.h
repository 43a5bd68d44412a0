// Blocks of conversions that only move bytes, on targets that permute bytes across a whole vector. Compiled
// once per instruction set.
#if defined(PRISMO_CONVERT_BYTE_MOVES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_CONVERT_BYTE_MOVES_INL_H_
#undef PRISMO_CONVERT_BYTE_MOVES_INL_H_
#else
#define PRISMO_CONVERT_BYTE_MOVES_INL_H_
#endif

#include "convert/sources-inl.h"
#include "simd/sinks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

#if PRISMO_BYTE_PERMUTES

// Vector `out` of a packed block takes the bytes of `mask[out][i]` from vector i of the source, each from
// where `index[out][i]` says. Channel c of the output is channel c - kChannelShift of the source, if there is
// one.
template <class Source, size_t kPixelBytes, size_t kChannelShift>
struct MoveTable {
  alignas(64) uint8_t index[kPixelBytes][Source::kVectors][64];
  uint64_t mask[kPixelBytes][Source::kVectors];

  constexpr MoveTable() : index{}, mask{} {
    for (size_t pixel = 0; pixel < kLanes; ++pixel) {
      for (size_t channel = kChannelShift; channel < 3; ++channel) {
        const size_t to = kPixelBytes * pixel + channel;
        const BytePlace from = Source::Place(pixel, channel - kChannelShift);
        index[to / kLanes][from.vector][to % kLanes] = static_cast<uint8_t>(from.byte);
        mask[to / kLanes][from.vector] |= uint64_t{1} << to % kLanes;
      }
    }
  }
};

template <class Source, size_t kPixelBytes, size_t kOut, size_t kChannelShift = 0>
HWY_INLINE V8 Moved(const V8 (&v)[Source::kVectors]) {
  static constexpr MoveTable<Source, kPixelBytes, kChannelShift> kTable;
  __m512i moved = _mm512_setzero_si512();
#pragma GCC unroll 4
  for (size_t i = 0; i < Source::kVectors; ++i) {
    if (kTable.mask[kOut][i] == 0) continue;
    moved = _mm512_mask_permutexvar_epi8(moved, kTable.mask[kOut][i],
                                         _mm512_load_si512(kTable.index[kOut][i]), v[i].raw);
  }
  return V8{moved};
}

// Everything but the channels of the output: alpha is all ones.
template <size_t kPixelBytes>
HWY_INLINE V8 Alpha() {
  return kPixelBytes == 4 ? hn::BitCast(D8(), hn::Set(D32(), 0xFF000000)) : hn::Zero(D8());
}

template <class Source>
struct MoveBlock {
  template <StoreKind kStores, size_t kPixelBytes>
  static HWY_INLINE void Convert(const Source& source, const uint8_t* src,
                                 const PackedSink<kPixelBytes>& sink) {
    V8 v[Source::kVectors];
    source.LoadVectors(src, v);
    const auto store = [&]<size_t... kOut>(std::index_sequence<kOut...>) PRISMO_INLINE {
      (Put<kStores>(hn::Or(Moved<Source, kPixelBytes, kOut>(v), Alpha<kPixelBytes>()), D8(),
                    sink.dst + kLanes * kOut),
       ...);
    };
    store(std::make_index_sequence<kPixelBytes>());
  }
};

template <class Source>
struct SpillBlock {
  template <StoreKind kStores>
  static HWY_INLINE void Convert(const SpillSource<Source>& source, const uint8_t* src,
                                 const BgraSink& sink) {
    V8 low[Source::kVectors];
    V8 excess[Source::kVectors];
    source.LoadVectors(src, low);
    source.Excess().LoadVectors(src, excess);
    const auto store = [&]<size_t... kOut>(std::index_sequence<kOut...>) PRISMO_INLINE {
      (Put<kStores>(hn::Or3(Moved<Source, 4, kOut>(low), Moved<Source, 4, kOut, 1>(excess), Alpha<4>()), D8(),
                    sink.dst + kLanes * kOut),
       ...);
    };
    store(std::make_index_sequence<4>());
  }
};

#endif  // PRISMO_BYTE_PERMUTES

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

#include "synth/to_bayer_rows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "synth/to_bayer_rows.cc"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "hwy/highway.h"
#include "simd/pieces-inl.h"
#include "simd/target_tables.h"
#include "synth/block_run-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {
namespace {

#if HWY_TARGET != HWY_SCALAR

#if PRISMO_BYTE_PERMUTES
inline constexpr size_t kReach = 64;  // bytes from which one byte of the output can come in a lookup
#else
inline constexpr size_t kReach = kPiece;
#endif

// Picks the samples of two channels in turn. kReach bytes of the output come from kSamples times as many, and
// each of these parts of the input has its lookup.
template <size_t kSampleBytes, size_t kSamples>
class Picker {
 public:
  static constexpr size_t kInputBytes = kSamples * kLanes;  // for one vector of samples
  static constexpr size_t kPixelBytes = kSampleBytes * kSamples;

  Picker(int32_t first, int32_t second) {
    for (size_t i = 0; i < kReach; ++i) {
      const size_t pixel = i / kSampleBytes;
      const size_t channel = static_cast<size_t>(pixel % 2 == 0 ? first : second);
      const size_t from = pixel * kPixelBytes + channel * kSampleBytes + i % kSampleBytes;
      for (size_t part = 0; part < kSamples; ++part) {
        index_[part][i] = from / kReach == part ? static_cast<uint8_t>(from % kReach) : 0x80;
      }
    }
  }

  HWY_INLINE V8 Pick(const uint8_t* from) const {
#if PRISMO_BYTE_PERMUTES
    V8 picked = hn::Zero(D8());
    for (size_t part = 0; part < kSamples; ++part) {
      const __m512i index = _mm512_load_si512(index_[part]);
      const __mmask64 here = ~_mm512_movepi8_mask(index);
      picked.raw =
          _mm512_mask_permutexvar_epi8(picked.raw, here, index, _mm512_loadu_si512(from + part * kReach));
    }
    return picked;
#else
    return hn::Or(hn::Or(Lookup<0>(from), Lookup<1>(from)),
                  kSamples == 3 ? Lookup<2>(from) : hn::Or(Lookup<2>(from), Lookup<kSamples - 1>(from)));
#endif
  }

 private:
#if !PRISMO_BYTE_PERMUTES
  template <size_t kPart>
  HWY_INLINE V8 Lookup(const uint8_t* from) const {
    const V8 part = LoadPiecesApart<kSamples * kPiece>(from + kPart * kPiece);
    return hn::TableLookupBytesOr0(part, hn::LoadDup128(D8(), index_[kPart]));
  }
#endif

  alignas(64) uint8_t index_[kSamples][kReach];
};

// How picked samples become those of the Bayer frame.
template <BayerDepths kDepths>
struct Depths {
  static constexpr DepthRule kRule = kDepthRules[static_cast<size_t>(kDepths)];
  static constexpr size_t kPixels = kLanes / std::min(kRule.from_bytes, kRule.to_bytes);

  template <StoreKind kStores, class Picker>
  static HWY_INLINE void Make(uint8_t* to, const uint8_t* from, const Picker& picker) {
    constexpr int kShift = kRule.shift;
    const D8 d8;
    const D16 d16;
    if constexpr (kRule.from_bytes == 2 && kRule.to_bytes == 1) {
      const V16 low = hn::BitCast(d16, picker.Pick(from));
      const V16 high = hn::BitCast(d16, picker.Pick(from + Picker::kInputBytes));
      Put<kStores>(LowBytes(hn::ShiftRight<-kShift>(low), hn::ShiftRight<-kShift>(high)), d8, to);
    } else if constexpr (kRule.from_bytes == 1 && kRule.to_bytes == 2) {
      const V8 samples = picker.Pick(from);
      const V16 low = hn::PromoteTo(d16, hn::LowerHalf(samples));
      const V16 high = hn::PromoteTo(d16, hn::UpperHalf(hn::Half<D8>(), samples));
      Put<kStores>(hn::BitCast(d8, hn::ShiftLeft<kShift>(low)), d8, to);
      Put<kStores>(hn::BitCast(d8, hn::ShiftLeft<kShift>(high)), d8, to + kLanes);
    } else if constexpr (kShift > 0) {
      Put<kStores>(hn::BitCast(d8, hn::ShiftLeft<kShift>(hn::BitCast(d16, picker.Pick(from)))), d8, to);
    } else {
      Put<kStores>(picker.Pick(from), d8, to);
    }
  }
};

template <class Depths, size_t kSamples>
struct RowMaker {
  using RowPicker = Picker<Depths::kRule.from_bytes, kSamples>;
  static constexpr size_t kBlock = 64;  // whole lines of either kind of sample
  static constexpr size_t kGroup = 1;

  RowPicker from_even, from_odd;  // for blocks that start at even and at odd columns

  RowMaker(int32_t even_channel, int32_t odd_channel)
      : from_even(even_channel, odd_channel), from_odd(odd_channel, even_channel) {}

  static constexpr size_t InBytes(size_t pixels) { return RowPicker::kPixelBytes * pixels; }
  static constexpr size_t OutBytes(size_t pixels) { return Depths::kRule.to_bytes * pixels; }

  template <StoreKind kStores>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    for (size_t i = 0; i < kBlock; i += Depths::kPixels) {
      Depths::template Make<kStores>(to + OutBytes(i), from + InBytes(i), x % 2 ? from_odd : from_even);
    }
  }
};

template <class Depths, size_t kSamples, StoreKind kStores>
void Make(uint8_t* dst, const uint8_t* src, size_t pitch, const SiteChannels& channels, size_t width,
          size_t height) {
  const RowMaker<Depths, kSamples> rows[2] = {{channels.top_left, channels.top_right},
                                              {channels.bottom_left, channels.bottom_right}};
  for (size_t y = 0; y < height; ++y) {
    MakeRun<kStores>(rows[y % 2], dst + Depths::kRule.to_bytes * width * y, src + pitch * y, width);
  }
}

template <BayerDepths kDepths>
constexpr void Fill(BayerKernels& kernels) {
  auto& make = kernels.make[static_cast<size_t>(kDepths)];
  make[0][0] = &Make<Depths<kDepths>, 3, StoreKind::kCached>;
  make[0][1] = &Make<Depths<kDepths>, 3, StoreKind::kStreaming>;
  make[1][0] = &Make<Depths<kDepths>, 4, StoreKind::kCached>;
  make[1][1] = &Make<Depths<kDepths>, 4, StoreKind::kStreaming>;
}

constexpr BayerKernels MakeTable() {
  BayerKernels kernels{};
  Fill<BayerDepths::k8to8>(kernels);
  Fill<BayerDepths::k8to10>(kernels);
  Fill<BayerDepths::k8to12>(kernels);
  Fill<BayerDepths::k10to8>(kernels);
  Fill<BayerDepths::k10to10>(kernels);
  Fill<BayerDepths::k10to12>(kernels);
  return kernels;
}

#else

constexpr BayerKernels MakeTable() { return {}; }

#endif

}  // namespace

const BayerKernels& BayerTable() {
  static constexpr BayerKernels kKernels = MakeTable();
  return kKernels;
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prismo {

const BayerKernels& CurrentBayerKernels() {
  static constexpr simd::TargetTables<BayerKernels> kTables{PRISMO_TARGET_TABLES(BayerTable)};
  return kTables.Current();
}

}  // namespace prismo
#endif

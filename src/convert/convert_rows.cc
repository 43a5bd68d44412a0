#include "convert/convert_rows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/convert_rows.cc"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "hwy/highway.h"
#include "simd/samples-inl.h"
#include "simd/sinks-inl.h"
#include "simd/target_tables.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {
namespace {

// A source loads one block of pixels as three vectors of bytes.
struct Mono8Source {
  static constexpr size_t kPixelBytes = 1;
  explicit Mono8Source(uint32_t) {}

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    b = g = r = hn::LoadU(D8(), src);
  }
};

struct MonoNSource {
  static constexpr size_t kPixelBytes = 2;
  int shift;
  // Shifts are taken modulo 32; from 16 on nothing is left of a word.
  explicit MonoNSource(uint32_t s) : shift(static_cast<int>(s & 31)) {}

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    b = g = r = LoadShiftedWords(src, shift);
  }
};

template <class Source, class Sink, StoreKind kStores>
void Run(uint8_t* dst, const uint8_t* src, size_t pixels, uint32_t shift) {
  const Source source(shift);
  const Sink sink{dst};
  const auto some = [&](size_t x, size_t count) PRISMO_INLINE {
    HWY_ALIGN uint8_t block[Source::kPixelBytes * kLanes] = {};
    std::memcpy(block, src + Source::kPixelBytes * x, Source::kPixelBytes * count);
    V8 b, g, r;
    source.Load(block, b, g, r);
    sink.StoreSome(x, 0, count, b, g, r);
  };

  size_t x = 0;
  if constexpr (kStores == StoreKind::kStreaming) {
    x = sink.PixelsToAlign(0);
    if (x >= std::min(pixels, kLanes)) return Run<Source, Sink, StoreKind::kCached>(dst, src, pixels, shift);
    if (x > 0) some(0, x);
  }
  for (; x + kLanes <= pixels; x += kLanes) {
    V8 b, g, r;
    source.Load(src + Source::kPixelBytes * x, b, g, r);
    sink.template Store<kStores>(x, b, g, r);
  }
  if (x < pixels) some(x, pixels - x);
  simd::FinishStores(kStores);
}

template <class S>
constexpr void Fill(ConvertKernels& kernels, prismo::Source source) {
  auto& run = kernels.run[static_cast<size_t>(source)];
  run[0][0] = &Run<S, BgraSink, StoreKind::kCached>;
  run[0][1] = &Run<S, BgraSink, StoreKind::kStreaming>;
  run[1][0] = &Run<S, BgrSink, StoreKind::kCached>;
  run[1][1] = &Run<S, BgrSink, StoreKind::kStreaming>;
}

constexpr ConvertKernels MakeTable() {
  ConvertKernels kernels{};
  Fill<Mono8Source>(kernels, prismo::Source::kMono8);
  Fill<MonoNSource>(kernels, prismo::Source::kMonoN);
  return kernels;
}

}  // namespace

const ConvertKernels& ConvertTable() {
  static constexpr ConvertKernels kKernels = MakeTable();
  return kKernels;
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prismo {

const ConvertKernels& CurrentConvertKernels() {
  static constexpr simd::TargetTables<ConvertKernels> kTables{PRISMO_TARGET_TABLES(ConvertTable)};
  return kTables.Current();
}

}  // namespace prismo
#endif

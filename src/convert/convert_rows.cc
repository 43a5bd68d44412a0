#include "convert/convert_rows.h"

#include <algorithm>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/convert_rows.cc"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "convert/byte_moves-inl.h"
#include "convert/sources-inl.h"
#include "convert/yuv_sources-inl.h"
#include "hwy/highway.h"
#include "simd/block_order-inl.h"
#include "simd/sinks-inl.h"
#include "simd/target_tables.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {
namespace {

// Sinks as a run needs them: At moves along the run, Scratch takes a block that is not whole.
struct GreySink {
  static constexpr size_t kPixelBytes = 1;
  uint8_t* dst;

  template <StoreKind kStores>
  HWY_INLINE void Store(size_t x, V8 b, V8, V8) const {
    Put<kStores>(b, D8(), dst + x);
  }
  HWY_INLINE size_t PixelsToLine(size_t x) const { return HWY_NAMESPACE::PixelsToLine(dst + x, 1); }
  HWY_INLINE void PrepareStore(size_t x) const { __builtin_prefetch(dst + x, 1); }
  HWY_INLINE void PrepareBlock(size_t x) const { PrepareLines(dst + x, kLanes); }
};

template <class Sink>
inline constexpr size_t kSinkBytes = Sink::kPixelBytes;  // of a pixel
template <>
inline constexpr size_t kSinkBytes<PlanarSink> = 3;

template <class Sink>
HWY_INLINE Sink At(const Sink& sink, size_t x) {
  return {sink.dst + Sink::kPixelBytes * x};
}

HWY_INLINE PlanarSink At(const PlanarSink& sink, size_t x) {
  return {{sink.plane[0] + x, sink.plane[1] + x, sink.plane[2] + x}};
}

template <class Sink, size_t kPixels>
struct Scratch {
  HWY_ALIGN uint8_t bytes[Sink::kPixelBytes * kPixels];

  Sink sink() { return {bytes}; }
  void CopyTo(const Sink& to, size_t first, size_t pixels) const {
    CopyStored(to.dst, bytes + Sink::kPixelBytes * first, Sink::kPixelBytes * pixels);
  }
};

template <size_t kPixels>
struct Scratch<PlanarSink, kPixels> {
  HWY_ALIGN uint8_t bytes[3][kPixels];

  PlanarSink sink() { return {{bytes[0], bytes[1], bytes[2]}}; }
  void CopyTo(const PlanarSink& to, size_t first, size_t pixels) const {
    for (size_t i = 0; i < 3; ++i) CopyStored(to.plane[i], bytes[i] + first, pixels);
  }
};

// Streaming stores fill whole cache lines, and a line that has seen one is not touched again: what comes
// before the first and after the last whole line of a run is stored plainly.
constexpr size_t kStreamPixels = 64;  // of any size they fill whole lines

// Pixels, in whole groups, before a line starts; `pixels` when none does.
template <class Source, class Sink>
size_t PixelsToLine(const Sink& sink, size_t pixels) {
  const size_t x = sink.PixelsToLine(0);
  return x < kCacheLine && x % Source::kGroup.pixels == 0 ? std::min(x, pixels) : pixels;
}

// One block of pixels from a source to a sink.
template <class Source, class Sink>
struct Block {
  template <StoreKind kStores>
  static HWY_INLINE void Convert(const Source& source, const uint8_t* src, const Sink& sink) {
    if constexpr (requires { source.template Convert<kStores>(src, sink); }) {
      source.template Convert<kStores>(src, sink);
    } else {
      V8 b, g, r;
      if constexpr (Source::kArithmetic) {
        source.Finish(source.Begin(src), b, g, r);
      } else {
        source.Load(src, b, g, r);
      }
      sink.template Store<kStores>(0, b, g, r);
    }
  }
};

#if PRISMO_BYTE_PERMUTES
template <size_t kPixelBytes>
struct Block<Mono8Source, PackedSink<kPixelBytes>> : MoveBlock<Mono8Source> {};
template <size_t kPixelBytes>
struct Block<MonoNSource, PackedSink<kPixelBytes>> : MoveBlock<MonoNSource> {};
template <size_t kPixelBytes>
struct Block<Rgb8Source, PackedSink<kPixelBytes>> : MoveBlock<Rgb8Source> {};
template <>
struct Block<Bgr8Source, BgraSink> : MoveBlock<Bgr8Source> {};
template <>
struct Block<Bgra8Source, BgrSink> : MoveBlock<Bgra8Source> {};
template <size_t kPixelBytes>
struct Block<RgbNSource, PackedSink<kPixelBytes>> : MoveBlock<RgbNSource> {};
template <size_t kPixelBytes>
struct Block<BgrNSource, PackedSink<kPixelBytes>> : MoveBlock<BgrNSource> {};
template <class Source>
struct Block<SpillSource<Source>, BgraSink> : SpillBlock<Source> {};
#endif

// kStreamPixels from a source to whole lines of memory.
template <class Source, class Sink>
HWY_INLINE void StreamLines(const Source& source, const uint8_t* src, const Sink& sink) {
  constexpr size_t kTogether = kBlocksTogether<Sink, StoreKind::kStreaming>;
  for (size_t x = 0; x < kStreamPixels; x += kTogether * Source::kBlockPixels) {
    const uint8_t* const from = src + Source::kGroup.Bytes(x);
    if constexpr (kTogether == 1) {
      Block<Source, Sink>::template Convert<StoreKind::kStreaming>(source, from, At(sink, x));
    } else {
      V8 b[kTogether], g[kTogether], r[kTogether];
#pragma GCC unroll 4
      for (size_t i = 0; i < kTogether; ++i) {
        source.Load(from + Source::kGroup.Bytes(i * Source::kBlockPixels), b[i], g[i], r[i]);
      }
      sink.StreamLines(x, b, g, r);
    }
  }
}

// The whole blocks of a source with arithmetic from pixel x to `end`. Each is begun before the one in front
// of it is finished: what waits for results fills the queues in front of the vector pipes long before these
// are busy (0.77 to 0.95 of the time). Returns the pixel behind them.
template <StoreKind kStores, class Source, class Sink, class Prepare>
HWY_INLINE size_t ConvertInStep(const Source& source, const Sink& sink, const uint8_t* src, size_t x,
                                size_t end, const Prepare& prepare) {
  constexpr size_t kBlock = Source::kBlockPixels;
  if (x + kBlock > end) return x;
  const auto begin = [&](size_t at) PRISMO_INLINE { return source.Begin(src + Source::kGroup.Bytes(at)); };
  const auto finish = [&](const auto& block) PRISMO_INLINE {
    prepare(x);
    V8 b, g, r;
    source.Finish(block, b, g, r);
    At(sink, x).template Store<kStores>(0, b, g, r);
    x += kBlock;
  };
  auto next = begin(x);
  while (x + 2 * kBlock <= end) {
    const auto block = next;
    next = begin(x + kBlock);
    finish(block);
  }
  finish(next);
  return x;
}

template <class Source, class Sink, StoreKind kStores>
HWY_INLINE void RunTo(const Source& source, const Sink& sink, const uint8_t* src, size_t pixels) {
  using ThisBlock = Block<Source, Sink>;
  constexpr bool kInStep = Source::kArithmetic && kLanes > 1;
  const auto plain = [&](size_t x, size_t end) PRISMO_INLINE {
    const auto prepare = [&](size_t at) PRISMO_INLINE {
      if constexpr (kStores == StoreKind::kCached && kLanes > 1) sink.PrepareBlock(at);
    };
    if constexpr (kInStep) {
      x = ConvertInStep<StoreKind::kCached>(source, sink, src, x, end, prepare);
    } else {
      for (; x + Source::kBlockPixels <= end; x += Source::kBlockPixels) {
        prepare(x);
        ThisBlock::template Convert<StoreKind::kCached>(source, src + Source::kGroup.Bytes(x), At(sink, x));
      }
    }
    if (x == end) return;
    constexpr size_t kBlock = Source::kBlockPixels;
    // The last block overlaps with the one before: 0.9 to 0.96 of the time of rows that begin anywhere, where
    // little is read (from six bytes a pixel 1.04).
    constexpr bool kOverlaps = kStores == StoreKind::kCached && Source::kGroup.Bytes(kBlock) <= 3 * kBlock;
    if (kOverlaps && pixels >= kBlock) {
      const size_t last = pixels - kBlock;
      return ThisBlock::template Convert<StoreKind::kCached>(source, src + Source::kGroup.Bytes(last),
                                                             At(sink, last));
    }
    Scratch<Sink, kBlock> out;
    if (pixels >= kBlock) {  // part of a whole one
      const size_t block = std::min(x, pixels - kBlock);
      ThisBlock::template Convert<StoreKind::kCached>(source, src + Source::kGroup.Bytes(block), out.sink());
      out.CopyTo(At(sink, x), x - block, end - x);
    } else {
      HWY_ALIGN uint8_t in[Source::kGroup.Bytes(kBlock)] = {};
      const size_t rest = std::min(end - x, kBlock);
      std::memcpy(in, src + Source::kGroup.Bytes(x), Source::kGroup.Bytes(rest));
      ThisBlock::template Convert<StoreKind::kCached>(source, in, out.sink());
      out.CopyTo(At(sink, x), 0, rest);
    }
  };

  if constexpr (kStores == StoreKind::kCached) {
    plain(0, pixels);
  } else {
    size_t x = PixelsToLine<Source>(sink, pixels);
    const size_t rest = (pixels - x) % kStreamPixels;
    for (size_t i = pixels - rest; i < pixels; i += kCacheLine / Sink::kPixelBytes) sink.PrepareStore(i);
    plain(0, x);
    const size_t blocks = (pixels - x) / kStreamPixels;
    constexpr size_t kInBytes = Source::kGroup.Bytes(kStreamPixels);
    const auto fetch = [&](size_t first, size_t bytes, size_t ahead)
                           PRISMO_INLINE { Fetch(src + Source::kGroup.Bytes(first) + ahead, bytes); };
    const auto block = [&](size_t i, size_t ahead) PRISMO_INLINE {
      const size_t first = x + i * kStreamPixels;
      fetch(first, kInBytes, ahead);
      StreamLines<Source, Sink>(source, src + Source::kGroup.Bytes(first), At(sink, first));
    };
    if constexpr (kInStep) {
      constexpr size_t kBlockBytes = Source::kGroup.Bytes(Source::kBlockPixels);
      ConvertInStep<StoreKind::kStreaming>(source, sink, src, x, x + blocks * kStreamPixels,
                                           [&](size_t at)
                                               PRISMO_INLINE { fetch(at, kBlockBytes, kPrefetchBytes); });
    } else if constexpr (Source::kArithmetic) {  // more of it than of reading
      for (size_t i = 0; i < blocks; ++i) block(i, kPrefetchBytes);
    } else {
      AtSeveralPlaces<kInBytes, kStreamPixels * kSinkBytes<Sink>>(blocks, block);
    }
    x += blocks * kStreamPixels;
    plain(x, pixels);
  }
}

template <class Source, class Sink, StoreKind kStores>
void Run(uint8_t* dst, const uint8_t* src, size_t pixels, uint32_t shift) {
  RunTo<Source, Sink, kStores>(Source(shift), Sink{dst}, src, pixels);
}

// Beside the C library's copy this was measured on x86 only.
template <size_t kPixelBytes, StoreKind kStores>
void Copy(uint8_t* dst, const uint8_t* src, size_t pixels, uint32_t) {
  const size_t bytes = kPixelBytes * pixels;
  size_t done = 0;
  if constexpr (kStores == StoreKind::kStreaming && HWY_ARCH_X86 && kLanes > 1) {
    constexpr size_t kBlock = 4 * kCacheLine;
    done = std::min(bytes, (kCacheLine - reinterpret_cast<uintptr_t>(dst) % kCacheLine) % kCacheLine);
    std::memcpy(dst, src, done);
    const size_t first = done, blocks = (bytes - done) / kBlock;
    AtSeveralPlaces<kBlock, kBlock>(blocks, [&](size_t block, size_t ahead) PRISMO_INLINE {
      const size_t at = first + block * kBlock;
      Fetch(src + at + ahead, kBlock);
      for (size_t i = at; i < at + kBlock; i += kLanes) hn::Stream(hn::LoadU(D8(), src + i), D8(), dst + i);
    });
    done += blocks * kBlock;
  }
  std::memcpy(dst + done, src + done, bytes - done);
}

template <StoreKind kStores>
void Split(uint8_t* const planes[3], const uint8_t* src, size_t pixels) {
  RunTo<Bgr8Source, PlanarSink, kStores>(Bgr8Source(0), PlanarSink{{planes[0], planes[1], planes[2]}}, src,
                                         pixels);
}

struct TableMaker {
  ConvertKernels kernels{};

  template <class S, class... Sinks>
  constexpr void Fill(prismo::Source source) {
    auto& run = kernels.run[static_cast<size_t>(source)];
    (FillSink<S, Sinks>(run[static_cast<size_t>(kPixelsOf<Sinks>)]), ...);
  }

  template <size_t kPixelBytes>
  constexpr void FillCopy(prismo::Source source, Pixels pixels) {
    auto& run = kernels.run[static_cast<size_t>(source)][static_cast<size_t>(pixels)];
    run[static_cast<size_t>(StoreKind::kCached)] = &Copy<kPixelBytes, StoreKind::kCached>;
    run[static_cast<size_t>(StoreKind::kStreaming)] = &Copy<kPixelBytes, StoreKind::kStreaming>;
  }

 private:
  template <class Sink>
  static constexpr Pixels kPixelsOf = Sink::kPixelBytes == 4   ? Pixels::kBgra
                                      : Sink::kPixelBytes == 3 ? Pixels::kBgr
                                                               : Pixels::kGrey;

  template <class S, class Sink>
  static constexpr void FillSink(ConvertRun (&run)[2]) {
    run[static_cast<size_t>(StoreKind::kCached)] = &Run<S, Sink, StoreKind::kCached>;
    run[static_cast<size_t>(StoreKind::kStreaming)] = &Run<S, Sink, StoreKind::kStreaming>;
  }
};

constexpr ConvertKernels MakeTable() {
  using enum prismo::Source;
  TableMaker table;
  table.Fill<Mono8Source, BgraSink, BgrSink>(kMono8);
  table.Fill<MonoNSource, BgraSink, BgrSink, GreySink>(kMonoN);
  table.Fill<MonoNSpillSource, BgraSink>(kMonoNSpill);
  table.Fill<Rgb8Source, BgraSink, BgrSink>(kRgb8);
  table.Fill<Bgr8Source, BgraSink>(kBgr8);
  table.FillCopy<3>(kBgr8, Pixels::kBgr);
  table.Fill<Bgra8Source, BgrSink>(kBgra8);
  table.FillCopy<4>(kBgra8, Pixels::kBgra);
  table.Fill<RgbNSource, BgraSink, BgrSink>(kRgbN);
  table.Fill<BgrNSource, BgraSink, BgrSink>(kBgrN);
  table.Fill<SpillSource<RgbNSource>, BgraSink>(kRgbNSpill);
  table.Fill<SpillSource<BgrNSource>, BgraSink>(kBgrNSpill);
  table.Fill<Yuv411Source, PackedSink<4, kYuvOrder>, PackedSink<3, kYuvOrder>>(kYuv411);
  table.Fill<Yuv422Source, PackedSink<4, kYuvOrder>, PackedSink<3, kYuvOrder>>(kYuv422);
  table.Fill<Yuv444Source, PackedSink<4, kYuvOrder>, PackedSink<3, kYuvOrder>>(kYuv444);
  table.kernels.split[static_cast<size_t>(StoreKind::kCached)] = &Split<StoreKind::kCached>;
  table.kernels.split[static_cast<size_t>(StoreKind::kStreaming)] = &Split<StoreKind::kStreaming>;
  return table.kernels;
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

// Covers a row of a mosaic with blocks, so that kernels see a block's samples with all their neighbours and
// nothing outside the frame is read or written. Compiled once per instruction set.
#if defined(PRISMO_BAYER_ROW_COVER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_BAYER_ROW_COVER_INL_H_
#undef PRISMO_BAYER_ROW_COVER_INL_H_
#else
#define PRISMO_BAYER_ROW_COVER_INL_H_
#endif

#include <algorithm>
#include <numeric>
#include <type_traits>

#include "bayer/bayer_row.h"
#include "hwy/cache_control.h"
#include "simd/sinks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

// Some lines around one block: in place where all that a kernel may read is memory of the frame, else a copy.
// What stands in columns outside the frame has no meaning; kernels put neighbours inside in its place.
template <typename T, size_t kLines>
class Window {
 public:
  // Points to the block's first column in each line.
  const T* line[kLines];

  HWY_INLINE Window(const T* const (&lines)[kLines], size_t x, const BayerRow& row) {
    const bool readable_before = x >= kReadBefore || row.inside;
    const bool readable_after = x + kLanes + kReadAfter <= size_t{row.width} * (row.inside ? 2 : 1);
    if (readable_before && readable_after) {
      for (size_t i = 0; i < kLines; ++i) line[i] = LoadedAlone(lines[i]) + x;
      return;
    }
    std::memset(columns_, 0, sizeof(columns_));
    const size_t before = std::min<size_t>(x, kReadBefore);
    const size_t after = std::min<size_t>(row.width - x, kLanes + kReadAfter);
    for (size_t i = 0; i < kLines; ++i) {
      line[i] = columns_[i] + kReadBefore;
      std::memcpy(columns_[i] + kReadBefore - before, lines[i] + x - before, (before + after) * sizeof(T));
    }
  }

 private:
  T columns_[kLines][kReadBefore + kLanes + kReadAfter];  // untouched where it is not needed
};

// Puts the neighbour inside the frame in the place of one outside of it.
template <class M, class V>
HWY_INLINE void MirrorAtEdges(M left_edge, M right_edge, V& west, V& east) {
  const V inside_west = hn::IfThenElse(left_edge, east, west);
  east = hn::IfThenElse(right_edge, west, east);
  west = inside_west;
}

// Lanes of a block that starts at column x, in kOrder, as a mask: those of columns outside [inner.begin,
// inner.end).
template <Order kOrder = Order::kPixels, class D>
HWY_INLINE hn::Mask<D> OutsideColumns(D d, size_t x, ColumnRange inner) {
  using T = hn::TFromD<D>;
  constexpr size_t kCount = hn::MaxLanes(D());
  struct Columns {
    alignas(64) T at[kCount];
    constexpr Columns() : at{} {
      for (size_t i = 0; i < kCount; ++i) at[PlaceOf<kOrder>(i)] = static_cast<T>(i);
    }
  };
  static constexpr Columns kColumns;
  const auto lane = hn::Load(d, kColumns.at);
  const auto limit = [&](size_t column) PRISMO_INLINE {
    return hn::Set(d, static_cast<T>(std::min(column > x ? column - x : 0, kLanes)));
  };
  return hn::Or(hn::Lt(lane, limit(inner.begin)), hn::Not(hn::Lt(lane, limit(inner.end))));
}

// True where lane 0 of a block that starts at column x is a green site.
HWY_INLINE bool StartsGreen(RowRole role, size_t x) { return role.green_first == ((x & 1) == 0); }

// Which bytes of a block are green sites.
template <class D>
HWY_INLINE hn::Mask<D> GreenSites(D d, bool starts_green) {
  using T = hn::TFromD<D>;
  const auto odd = hn::And(hn::Iota(d, T{0}), hn::Set(d, T{1}));
  return hn::Eq(odd, hn::Set(d, static_cast<T>(starts_green ? 0 : 1)));
}

// Of two vectors of sites, the first at green sites and the second at others.
template <class D, class V>
HWY_INLINE V AtGreenSites(D d, bool starts_green, V green, V others) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4  // where a blend by a mask takes two steps or three
  if constexpr (sizeof(hn::TFromD<D>) == 2) {
    return starts_green ? hn::OddEven(others, green) : hn::OddEven(green, others);
  }
#endif
  return hn::IfThenElse(GreenSites(d, starts_green), green, others);
}

// Fetches a block of samples, 2048 samples ahead: the processor's own prefetch falls behind beside streaming
// stores (1.2 times and more at 26 megapixels), and loads that cross lines cost more where they miss (plain
// stores 1.1 times at 2 megapixels, words beside streaming stores 1.2 times).
template <typename T>
HWY_INLINE void ReadAhead(const T* from) {
  constexpr size_t kAhead = 2048;
  const auto* bytes = reinterpret_cast<const uint8_t*>(from + kAhead);
  for (size_t byte = 0; byte < kLanes * sizeof(T); byte += kCacheLine) hwy::Prefetch(bytes + byte);
}

// Covers the columns of `row`.
//   inner(x, blocks, starts_green)
//     makes what computes the blocks from column x on, all of whose columns lie in `inner_columns`:
//     (block, row_colour, green, other_colour), called for block 0, 1, 2 ...
//   border(x, starts_green, row_colour, green, other_colour)
//     computes any other block, from column x on; called after the inner ones
// A block is the colour of the row's sites that are not green, green, and the colour of the rows between.
// kAnyColumn tells that inner blocks may begin and end anywhere where memory can be read, and that they may
// overlap; kInnerOrder, how their pixels stand.
template <StoreKind kStores, bool kAnyColumn = false, Order kInnerOrder = Order::kPixels, class Sink,
          class Inner, class Border>
HWY_INLINE void CoverColumns(const BayerRow& row, ColumnRange inner_columns, const Sink& sink,
                             const Inner& inner, const Border& border) {
  const size_t begin = row.columns.begin;
  const size_t end = row.columns.end;
  const bool blue = row.role.blue;
  const auto store = [blue](const auto& to, size_t x, V8 row_colour, V8 green, V8 other) PRISMO_INLINE {
    if (blue) {
      to.template Store<kStores>(x, row_colour, green, other);
    } else {
      to.template Store<kStores>(x, other, green, row_colour);
    }
  };
  // From stream_begin to stream_end whole blocks are streamed, which fill whole lines of memory.
  size_t stream_begin = begin, stream_end = end;
  // The first `count` lanes of the block at x. Kept out of line: rows have a few such blocks.
  const auto some = [&](size_t x, size_t count) HWY_ATTR __attribute__((noinline)) {
    V8 row_colour, green, other_colour;
    border(x, StartsGreen(row.role, x), row_colour, green, other_colour);
    if (count == kLanes && x >= stream_begin && x + kLanes <= stream_end) {
      store(sink, x, row_colour, green, other_colour);
    } else {
      sink.template StoreSome<kStores>(x, count, blue ? row_colour : other_colour, green,
                                       blue ? other_colour : row_colour);
    }
  };
  const auto whole = [&](size_t x) HWY_ATTR { some(x, kLanes); };

  if constexpr (kStores == StoreKind::kStreaming) {
    constexpr size_t kBlockBytes = Sink::kPixelBytes * kLanes;
    constexpr size_t kWholeLines = std::lcm(kBlockBytes, kCacheLine) / kBlockBytes * kLanes;  // pixels
    stream_begin = std::min(begin + sink.PixelsToLine(begin), end);
    stream_end = stream_begin + (end - stream_begin) / kWholeLines * kWholeLines;
    if (Sink::kPixelBytes * (end - stream_begin) % kCacheLine != 0) sink.PrepareStore(end - 1);
  }
  const bool readable = kAnyColumn && row.inside;
  const size_t inner_from = std::max<size_t>(inner_columns.begin, readable ? 0 : kReadBefore);
  const size_t inner_to = std::min<size_t>(
      {inner_columns.end, row.width - std::min<size_t>(row.width, readable ? 0 : kReadAfter), stream_end});
  constexpr size_t kTogether = kBlocksTogether<Sink, kStores>, kPixelsTogether = kTogether * kLanes;
  size_t x = stream_begin;
  if (x < inner_from) x += (inner_from - x + kPixelsTogether - 1) / kPixelsTogether * kPixelsTogether;
  const size_t blocks = (std::max(inner_to, x) - x) / kLanes;
  const bool last_is_inner = kAnyColumn && kStores == StoreKind::kCached && kLanes > 1 && blocks > 0 &&
                             end <= inner_to && (end - x) % 2 == 0;
  // A copy: `some` takes the address of the original, which keeps it in memory.
  const auto inner_sink = sink.template Taking<kInnerOrder>();
  // Known where green sites are, neighbours of green and of other sites turn out to be the same vectors.
  const auto inner_blocks = [&](auto starts_green) PRISMO_INLINE {
    const auto one = [&](auto& compute, size_t block) PRISMO_INLINE {
      V8 row_colour, green, other_colour;
      compute(block, row_colour, green, other_colour);
      store(inner_sink, x + block * kLanes, row_colour, green, other_colour);
    };
    auto compute = inner(x, blocks, starts_green);
    if constexpr (kLanes == 1) {  // the next block is the next site
      auto compute_next = inner(x, blocks, std::bool_constant<!decltype(starts_green)::value>());
      for (size_t i = 0; i < blocks; ++i) {
        one(compute, i);
        if (++i < blocks) one(compute_next, i);
      }
    } else {
      size_t i = 0;
      if constexpr (kTogether > 1) {
        for (; i + kTogether <= blocks; i += kTogether) {
          V8 row_colour[kTogether], green[kTogether], other_colour[kTogether];
#pragma GCC unroll 4
          for (size_t j = 0; j < kTogether; ++j) compute(i + j, row_colour[j], green[j], other_colour[j]);
          if (blue) {
            inner_sink.StreamLines(x + i * kLanes, row_colour, green, other_colour);
          } else {
            inner_sink.StreamLines(x + i * kLanes, other_colour, green, row_colour);
          }
        }
      }
      for (; i < blocks; ++i) one(compute, i);
      if constexpr (kAnyColumn) {
        if (last_is_inner && x + blocks * kLanes < end) {
          V8 row_colour, green, other_colour;
          inner(end - kLanes, 1, starts_green)(0, row_colour, green, other_colour);
          store(inner_sink, end - kLanes, row_colour, green, other_colour);
        }
      }
    }
  };
  if (StartsGreen(row.role, x)) {
    inner_blocks(std::true_type());
  } else {
    inner_blocks(std::false_type());
  }
  if (end - begin < kLanes) return some(begin, end - begin);
  for (size_t left = begin; left < stream_begin; left += std::min(kLanes, stream_begin - left)) {
    some(left, std::min(kLanes, stream_begin - left));
  }
  const size_t inner_begin = x;
  x = stream_begin;
  for (; x < inner_begin && x + kLanes <= stream_end; x += kLanes) whole(x);
  x += blocks * kLanes;
  for (; x + kLanes <= end; x += kLanes) whole(x);
  if (x == end || last_is_inner) return;
  if constexpr (kStores == StoreKind::kStreaming) {
    some(x, end - x);
  } else {
    whole(end - kLanes);  // overlaps the block before
  }
}

// Computes blocks of the border from windows on lines of the frame:
//   border(lines at x, x, starts_green, row_colour, green, other_colour)
template <typename T, size_t kLines, class Border>
struct WindowedBorder {
  const T* const (&lines)[kLines];
  const BayerRow& row;
  const Border& border;

  HWY_INLINE void operator()(size_t x, bool starts_green, V8& row_colour, V8& green, V8& other_colour) const {
    ReadAhead(lines[kLines - 1] + x);
    const Window<T, kLines> window(lines, x, row);
    border(window.line, x, starts_green, row_colour, green, other_colour);
  }
};

// CoverColumns for kernels that compute blocks from lines of the frame, wherever they begin:
//   inner(lines at x, starts_green, row_colour, green, other_colour)
//   border(lines at x, x, starts_green, row_colour, green, other_colour)
//     on a window
// The last line, which no row before has read, is read ahead.
template <StoreKind kStores, Order kInnerOrder, typename T, size_t kLines, class Sink, class Inner,
          class Border>
HWY_INLINE void CoverRow(const T* const (&lines)[kLines], const BayerRow& row, ColumnRange inner_columns,
                         const Sink& sink, const Inner& inner, const Border& border) {
  struct {
    const T* from[kLines];
  } inner_lines;
  for (size_t i = 0; i < kLines; ++i) inner_lines.from[i] = LoadedAlone(lines[i]);
  CoverColumns<kStores, true, kInnerOrder>(
      row, inner_columns, sink,
      [=](size_t first, size_t, auto starts_green) PRISMO_INLINE {
        return [=](size_t block, V8& row_colour, V8& green, V8& other_colour) PRISMO_INLINE {
          const size_t x = first + block * kLanes;
          const T* at_x[kLines];
          for (size_t i = 0; i < kLines; ++i) at_x[i] = inner_lines.from[i] + x;
          ReadAhead(at_x[kLines - 1]);
          // Words gain nothing.
          if constexpr (kStores == StoreKind::kCached && kLanes > 1 && sizeof(T) == 1) sink.PrepareBlock(x);
          inner(at_x, starts_green, row_colour, green, other_colour);
        };
      },
      WindowedBorder<T, kLines, Border>{lines, row, border});
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

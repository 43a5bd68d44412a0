// Covers a row of a mosaic with blocks, so that kernels see a block's samples with all their neighbours and
// nothing outside the frame is read or written. Compiled once per instruction set.
#if defined(PRISMO_BAYER_ROW_COVER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_BAYER_ROW_COVER_INL_H_
#undef PRISMO_BAYER_ROW_COVER_INL_H_
#else
#define PRISMO_BAYER_ROW_COVER_INL_H_
#endif

#include <algorithm>

#include "bayer/bayer_row.h"
#include "simd/sinks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

// Columns that a block's kernel may read before its first and behind its last column.
inline constexpr size_t kReadBefore = 2;
inline constexpr size_t kReadAfter = 3;

// A copy of some lines around one block, with columns outside the frame mirrored about the outermost ones.
template <typename T, size_t kLines>
class Window {
 public:
  // Points to the block's first column in each line.
  const T* line[kLines];

  // `width` is at least 2.
  HWY_INLINE Window(const T* const (&lines)[kLines], size_t x, size_t width) {
    constexpr size_t kInner = kLanes + kReadAfter;  // columns from the block's first on
    if (x >= kReadBefore && x + kInner <= width) {  // nothing to mirror
      for (size_t i = 0; i < kLines; ++i) line[i] = lines[i] + x;
      return;
    }
    for (size_t i = 0; i < kLines; ++i) {
      const T* const from = lines[i];
      T* const to = columns_[i] + kReadBefore;
      line[i] = to;
      // The two usual cases, with copies of constant size.
      if (x == 0 && width >= kInner) {
        std::memcpy(to, from, kInner * sizeof(T));
        to[-1] = from[1];
        to[-2] = from[2];
      } else if (x + kLanes == width && x >= kReadBefore) {
        std::memcpy(to - kReadBefore, from + x - kReadBefore, (kLanes + kReadBefore) * sizeof(T));
        to[kLanes] = from[width - 2];
        to[kLanes + 1] = from[std::max<size_t>(width, 3) - 3];
        to[kLanes + 2] = to[kLanes];
      } else {
        for (size_t k = 0; k < kReadBefore + kInner; ++k) to[k - kReadBefore] = from[Mirrored(x + k, width)];
      }
    }
  }

 private:
  // The column that stands in for column k - kReadBefore.
  static HWY_INLINE size_t Mirrored(size_t k, size_t width) {
    if (k < kReadBefore) return std::min(kReadBefore - k, width - 1);
    const size_t column = k - kReadBefore;
    if (column < width) return column;
    const size_t beyond = column - (width - 1);
    return beyond < width ? width - 1 - beyond : 0;
  }

  T columns_[kLines][kReadBefore + kLanes + kReadAfter];
};

// Lanes of a block that starts at column x, as a mask: those of columns outside [inner.begin, inner.end).
template <class D>
HWY_INLINE hn::Mask<D> OutsideColumns(D d, size_t x, ColumnRange inner) {
  using T = hn::TFromD<D>;
  const auto lane = hn::Iota(d, T{0});
  const auto limit = [&](size_t column) HWY_ATTR {
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

// Covers the columns of `row`.
//   inner(lines at x, x, starts_green, c0, c1, c2)   a block all of whose columns lie in `inner_columns`
//   border(lines at x, x, starts_green, c0, c1, c2)  any other block, on a window
// compute one block, whose channels go to sink.Store*(x, c0, c1, c2).
template <StoreKind kStores, typename T, size_t kLines, class Sink, class Inner, class Border>
HWY_INLINE void CoverRow(const T* const (&lines)[kLines], const BayerRow& row, ColumnRange inner_columns,
                         const Sink& sink, const Inner& inner, const Border& border) {
  const size_t begin = row.columns.begin;
  const size_t end = row.columns.end;
  const auto at = [&](size_t x, auto&& use) HWY_ATTR {
    V8 c0, c1, c2;
    const Window<T, kLines> window(lines, x, row.width);
    border(window.line, x, StartsGreen(row.role, x), c0, c1, c2);
    use(c0, c1, c2);
  };
  const auto some = [&](size_t x, size_t first, size_t count) HWY_ATTR {
    at(x, [&](V8 c0, V8 c1, V8 c2) HWY_ATTR { sink.StoreSome(x, first, count, c0, c1, c2); });
  };
  const auto whole = [&](size_t x) HWY_ATTR {
    at(x, [&](V8 c0, V8 c1, V8 c2) HWY_ATTR { sink.template Store<kStores>(x, c0, c1, c2); });
  };

  if (end - begin < kLanes) return some(begin, 0, end - begin);
  size_t x = begin;
  if constexpr (kStores == StoreKind::kStreaming) {
    if (const size_t head = sink.PixelsToAlign(x); head > 0) {
      some(x, 0, head);
      x += head;
    }
  }
  // Blocks that only a window serves: at the start, and again at the end.
  const size_t inner_begin = std::max<size_t>(inner_columns.begin, kReadBefore);
  for (; x < inner_begin && x + kLanes <= end; x += kLanes) whole(x);
  const size_t inner_end =
      std::min<size_t>({inner_columns.end, row.width - std::min<size_t>(row.width, kReadAfter), end});
  bool starts_green = StartsGreen(row.role, x);
  for (; x + kLanes <= inner_end; x += kLanes) {
    if constexpr (kLanes == 1) starts_green = StartsGreen(row.role, x);
    const T* at_x[kLines];
    for (size_t i = 0; i < kLines; ++i) at_x[i] = lines[i] + x;
    V8 c0, c1, c2;
    inner(at_x, x, starts_green, c0, c1, c2);
    sink.template Store<kStores>(x, c0, c1, c2);
  }
  for (; x + kLanes <= end; x += kLanes) whole(x);
  if (x == end) return;
  if constexpr (kStores == StoreKind::kStreaming) {
    some(end - kLanes, x - (end - kLanes), end - x);
  } else {
    whole(end - kLanes);  // overlaps the block before
  }
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

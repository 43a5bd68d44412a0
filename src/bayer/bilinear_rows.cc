#include "bayer/bilinear_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bayer/bilinear_rows.cc"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "bayer/row_cover-inl.h"
#include "hwy/highway.h"
#include "simd/samples-inl.h"
#include "simd/target_tables.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {
namespace {

// Arithmetic on one vector of sites. Averages of 1, 2 or 4 samples truncate and leave the result in the low 8
// bits.

struct Bytes {
  using T = uint8_t;
  using D = D8;
  using V = V8;
  explicit Bytes(uint32_t) {}

  HWY_INLINE V Load(const T* from) const { return hn::LoadU(D(), from); }
  HWY_INLINE V Average1(V v) const { return v; }
  // The machine's average rounds up.
  HWY_INLINE V Average2(V a, V b) const { return hn::Sub(hn::AverageRound(a, b), OddSum(a, b)); }
  // The halves that both truncating averages of pairs have lost make a whole when both pairs are odd: then
  // rounding up is right.
  HWY_INLINE V Average4(V a, V b, V c, V d) const {
    const V ab = Average2(a, b);
    const V cd = Average2(c, d);
    const V both_odd = hn::And(OddSum(a, b), OddSum(c, d));
    return hn::Sub(hn::AverageRound(ab, cd), hn::AndNot(both_odd, OddSum(ab, cd)));
  }

 private:
  static HWY_INLINE V OddSum(V a, V b) { return hn::And(hn::Xor(a, b), hn::Set(D(), 1)); }
};

// Words: the sum of four 16-bit samples wraps, but bits shift + 2 to shift + 9 of it are right for shifts up
// to 6.
struct Words {
  using T = uint16_t;
  using D = D16;
  using V = V16;
  int shift;
  explicit Words(uint32_t s) : shift(static_cast<int>(s % 32)) {}

  HWY_INLINE V Load(const T* from) const { return hn::LoadU(D(), from); }
  HWY_INLINE V Average1(V v) const { return hn::ShiftRightSame(v, shift); }
  HWY_INLINE V Average2(V a, V b) const { return hn::ShiftRightSame(hn::Add(a, b), shift + 1); }
  HWY_INLINE V Average4(V a, V b, V c, V d) const {
    return hn::ShiftRightSame(hn::Add(hn::Add(a, b), hn::Add(c, d)), shift + 2);
  }
};

// Words with sums of 32 bits. Each shift count is taken modulo 32 by itself.
struct WideWords {
  using T = uint16_t;
  using D = D32;
  using V = V32;
  int shift1, shift2, shift4;
  explicit WideWords(uint32_t s)
      : shift1(static_cast<int>(s % 32)),
        shift2(static_cast<int>((s + 1) % 32)),
        shift4(static_cast<int>((s + 2) % 32)) {}

  HWY_INLINE V Load(const T* from) const { return hn::PromoteTo(D(), hn::LoadU(hn::Rebind<T, D>(), from)); }
  HWY_INLINE V Average1(V v) const { return hn::ShiftRightSame(v, shift1); }
  HWY_INLINE V Average2(V a, V b) const { return hn::ShiftRightSame(hn::Add(a, b), shift2); }
  HWY_INLINE V Average4(V a, V b, V c, V d) const {
    return hn::ShiftRightSame(hn::Add(hn::Add(a, b), hn::Add(c, d)), shift4);
  }
};

// Where a vector of sites touches the frame's border.
template <class D>
struct BorderSites {
  bool edge_row;
  hn::Mask<D> left_edge, right_edge;
};

// One vector of sites from column `x` of the lines on: the colour of the row's other sites, green, and the
// colour of the rows above and below. `border` is null inside the frame.
//
// On the frame's border averages are over the neighbours inside the frame (after mirroring, west or east,
// north or south stands for both), and green uses only the two neighbours along the border.
template <class A>
HWY_INLINE void Interpolate(const A& arithmetic, const typename A::T* const (&lines)[3], size_t x,
                            hn::Mask<typename A::D> green_sites, const BorderSites<typename A::D>* border,
                            typename A::V& row_colour, typename A::V& green, typename A::V& other_colour) {
  using V = typename A::V;
  const auto load = [&](size_t line, ptrdiff_t dx) PRISMO_INLINE {
    return arithmetic.Load(lines[line] + static_cast<ptrdiff_t>(x) + dx);
  };
  const V own = arithmetic.Average1(load(1, 0));
  const V north = load(0, 0), south = load(2, 0);
  V west = load(1, -1), east = load(1, 1);
  V north_west = load(0, -1), north_east = load(0, 1);
  V south_west = load(2, -1), south_east = load(2, 1);
  if (border) {
    MirrorAtEdges(border->left_edge, border->right_edge, west, east);
    MirrorAtEdges(border->left_edge, border->right_edge, north_west, north_east);
    MirrorAtEdges(border->left_edge, border->right_edge, south_west, south_east);
  }
  V horizontal = arithmetic.Average2(west, east);
  V vertical = arithmetic.Average2(north, south);
  V cross = arithmetic.Average4(west, east, north, south);
  V diagonal = arithmetic.Average4(north_west, north_east, south_west, south_east);
  if (border) {
    const auto edge = hn::Or(border->left_edge, border->right_edge);
    if (border->edge_row) {
      cross = hn::IfThenElse(edge, arithmetic.Average2(north, west), horizontal);
      diagonal =
          hn::IfThenElse(edge, arithmetic.Average1(north_west), arithmetic.Average2(north_west, north_east));
      vertical = arithmetic.Average1(north);
    } else {
      cross = hn::IfThenElse(edge, vertical, cross);
      diagonal = hn::IfThenElse(edge, arithmetic.Average2(north_west, south_west), diagonal);
    }
    horizontal = hn::IfThenElse(edge, arithmetic.Average1(west), horizontal);
  }
  row_colour = hn::IfThenElse(green_sites, horizontal, own);
  green = hn::IfThenElse(green_sites, own, cross);
  other_colour = hn::IfThenElse(green_sites, vertical, diagonal);
}

// Sites of one vector of A's lanes from lane `lane` of the block on.
template <class A, bool kBorder>
HWY_INLINE void InterpolatePart(const A& arithmetic, const BilinearLines& info, const BayerRow& row,
                                const typename A::T* const (&lines)[3], size_t x, size_t lane,
                                bool starts_green, typename A::V& row_colour, typename A::V& green,
                                typename A::V& other_colour) {
  using D = typename A::D;
  const auto green_sites = GreenSites(D(), starts_green);
  if constexpr (kBorder) {
    const BorderSites<D> border{info.edge, OutsideColumns(D(), x + lane, {1, row.width}),
                                OutsideColumns(D(), x + lane, {0, row.width - 1})};
    Interpolate(arithmetic, lines, lane, green_sites, &border, row_colour, green, other_colour);
  } else {
    Interpolate<A>(arithmetic, lines, lane, green_sites, nullptr, row_colour, green, other_colour);
  }
}

// One block, reduced to bytes.
template <class A, bool kBorder>
HWY_INLINE void Block(const A& arithmetic, const BilinearLines& info, const BayerRow& row,
                      const typename A::T* const (&lines)[3], size_t x, bool starts_green, V8& row_colour,
                      V8& green, V8& other_colour) {
  constexpr size_t kPart = hn::MaxLanes(typename A::D());
  const auto part = [&](size_t lane, auto& r, auto& g, auto& o) PRISMO_INLINE {
    InterpolatePart<A, kBorder>(arithmetic, info, row, lines, x, lane, starts_green, r, g, o);
  };
  if constexpr (sizeof(hn::TFromD<typename A::D>) == 1) {
    part(0, row_colour, green, other_colour);
#if HWY_TARGET != HWY_SCALAR
  } else if constexpr (sizeof(hn::TFromD<typename A::D>) == 2) {
    V16 r0, g0, o0, r1, g1, o1;
    part(0, r0, g0, o0);
    part(kPart, r1, g1, o1);
    row_colour = LowBytes(r0, r1);
    green = LowBytes(g0, g1);
    other_colour = LowBytes(o0, o1);
#endif
  } else {
    using D = typename A::D;
    const hn::Rebind<uint8_t, D> d_bytes;
    const hn::RebindToSigned<D> d_signed;
    // Not TruncateTo: for 512-bit vectors Highway 1.0.3 permutes the wrong bytes.
    const auto low_bytes = [&](typename A::V v) PRISMO_INLINE {
      return hn::DemoteTo(d_bytes, hn::BitCast(d_signed, hn::And(v, hn::Set(D(), 255))));
    };
    HWY_ALIGN uint8_t bytes[3][kLanes];
    for (size_t lane = 0; lane < kLanes; lane += kPart) {
      typename A::V r, g, o;
      part(lane, r, g, o);
      hn::StoreU(low_bytes(r), d_bytes, bytes[0] + lane);
      hn::StoreU(low_bytes(g), d_bytes, bytes[1] + lane);
      hn::StoreU(low_bytes(o), d_bytes, bytes[2] + lane);
    }
    row_colour = hn::Load(D8(), bytes[0]);
    green = hn::Load(D8(), bytes[1]);
    other_colour = hn::Load(D8(), bytes[2]);
  }
}

template <class Sink>
HWY_INLINE Sink MakeSink(const RowTarget& target) {
  return {target.plane[0], target.first_column};
}
template <>
HWY_INLINE PlanarSink MakeSink<PlanarSink>(const RowTarget& target) {
  return {{target.plane[0], target.plane[1], target.plane[2]}, target.first_column};
}

template <class A, class Sink, StoreKind kStores>
void Row(const BilinearLines& info, const BayerRow& row, const RowTarget& target) {
  using T = typename A::T;
  const A arithmetic(info.shift);
  const Sink sink = MakeSink<Sink>(target);
  if (kStores == StoreKind::kStreaming && sink.PixelsToAlign(row.columns.begin) == kLanes) {
    return Row<A, Sink, StoreKind::kCached>(info, row, target);
  }
  const T* const lines[3] = {static_cast<const T*>(info.up), static_cast<const T*>(info.mid),
                             static_cast<const T*>(info.down)};
  // In the top and bottom row every block is one of the border.
  const ColumnRange inner_columns =
      info.edge ? ColumnRange{row.width, row.width} : ColumnRange{1, row.width - 1};
  CoverRow<kStores>(
      lines, 2, row, inner_columns, sink,
      [&](const T* const(&at)[3], size_t x, bool starts_green, V8& row_colour, V8& green, V8& other_colour)
          PRISMO_INLINE {
            Block<A, false>(arithmetic, info, row, at, x, starts_green, row_colour, green, other_colour);
          },
      [&](const T* const(&at)[3], size_t x, bool starts_green, V8& row_colour, V8& green, V8& other_colour)
          PRISMO_INLINE {
            Block<A, true>(arithmetic, info, row, at, x, starts_green, row_colour, green, other_colour);
          });
}

template <class Sink>
constexpr void Fill(BilinearRow (&rows)[3][2]) {
  rows[0][0] = &Row<Bytes, Sink, StoreKind::kCached>;
  rows[0][1] = &Row<Bytes, Sink, StoreKind::kStreaming>;
#if HWY_TARGET == HWY_SCALAR
  rows[1][0] = rows[1][1] = &Row<WideWords, Sink, StoreKind::kCached>;
#else
  rows[1][0] = &Row<Words, Sink, StoreKind::kCached>;
  rows[1][1] = &Row<Words, Sink, StoreKind::kStreaming>;
#endif
  rows[2][0] = rows[2][1] = &Row<WideWords, Sink, StoreKind::kCached>;
}

constexpr BilinearKernels MakeTable() {
  BilinearKernels kernels{};
  Fill<BgraSink>(kernels.bgra);
  Fill<BgrSink>(kernels.bgr);
  kernels.planar[0] = &Row<Bytes, PlanarSink, StoreKind::kCached>;
  kernels.planar[1] = &Row<Bytes, PlanarSink, StoreKind::kStreaming>;
  kernels.green = &Row<Bytes, GreenSink, StoreKind::kCached>;
  return kernels;
}

}  // namespace

const BilinearKernels& BilinearTable() {
  static constexpr BilinearKernels kKernels = MakeTable();
  return kKernels;
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prismo {

const BilinearKernels& CurrentBilinearKernels() {
  static constexpr simd::TargetTables<BilinearKernels> kTables{PRISMO_TARGET_TABLES(BilinearTable)};
  return kTables.Current();
}

}  // namespace prismo
#endif

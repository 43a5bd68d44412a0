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

// Arithmetic on one vector of sites. Averages of 1, 2 or 4 samples truncate and leave the result in one byte
// of each lane; two samples make a pair, which an average of 2 or 4 takes.

// The machine's average rounds up, so that a pair also knows where half was added.
struct Bytes {
  using T = uint8_t;
  using D = D8;
  using V = V8;
  struct Pair {
    V average, odd_sum;
  };
  explicit Bytes(uint32_t) {}

  HWY_INLINE V Load(const T* from) const { return LoadedOnce(hn::LoadU(D(), from)); }
  HWY_INLINE Pair MakePair(V a, V b) const { return {hn::AverageRound(a, b), OddSum(a, b)}; }
  HWY_INLINE V Average1(V v) const { return v; }
  HWY_INLINE V Average2(Pair p) const { return hn::Sub(p.average, p.odd_sum); }
  // At most 3/4 too much over all: one less wherever anything was added.
  HWY_INLINE V Average4(Pair p, Pair q) const {
    const V rounded = hn::Or(hn::Or(p.odd_sum, q.odd_sum), OddSum(p.average, q.average));
    return hn::Sub(hn::AverageRound(p.average, q.average), rounded);
  }

 private:
  static HWY_INLINE V OddSum(V a, V b) { return hn::And(hn::Xor(a, b), hn::Set(D(), 1)); }
};

// Words: the sum of four 16-bit samples wraps, but bits shift + 2 to shift + 9 of it are right for shifts up
// to 6. A multiplication moves them to the lane's high byte.
struct Words {
  using T = uint16_t;
  using D = D16;
  using V = V16;
  using Pair = V;
  V factor1, factor2, factor4;
  explicit Words(uint32_t s)
      : factor1(hn::Set(D(), static_cast<T>(256u >> s % 32))),
        factor2(hn::Set(D(), static_cast<T>(128u >> s % 32))),
        factor4(hn::Set(D(), static_cast<T>(64u >> s % 32))) {}

  HWY_INLINE V Load(const T* from) const { return hn::LoadU(D(), from); }
  HWY_INLINE Pair MakePair(V a, V b) const { return hn::Add(a, b); }
  HWY_INLINE V Average1(V v) const { return hn::Mul(v, factor1); }
  HWY_INLINE V Average2(Pair p) const { return hn::Mul(p, factor2); }
  HWY_INLINE V Average4(Pair p, Pair q) const { return hn::Mul(hn::Add(p, q), factor4); }
};

// Words with sums of 32 bits. Each shift count is taken modulo 32 by itself.
struct WideWords {
  using T = uint16_t;
  using D = D32;
  using V = V32;
  using Pair = V;
  int shift1, shift2, shift4;
  explicit WideWords(uint32_t s)
      : shift1(static_cast<int>(s % 32)),
        shift2(static_cast<int>((s + 1) % 32)),
        shift4(static_cast<int>((s + 2) % 32)) {}

  HWY_INLINE V Load(const T* from) const { return hn::PromoteTo(D(), hn::LoadU(hn::Rebind<T, D>(), from)); }
  HWY_INLINE Pair MakePair(V a, V b) const { return hn::Add(a, b); }
  HWY_INLINE V Average1(V v) const { return hn::ShiftRightSame(v, shift1); }
  HWY_INLINE V Average2(Pair p) const { return hn::ShiftRightSame(p, shift2); }
  HWY_INLINE V Average4(Pair p, Pair q) const { return hn::ShiftRightSame(hn::Add(p, q), shift4); }
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
                            bool starts_green, const BorderSites<typename A::D>* border,
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
  const auto row_pair = arithmetic.MakePair(west, east);
  const auto column_pair = arithmetic.MakePair(north, south);
  V horizontal = arithmetic.Average2(row_pair);
  V vertical = arithmetic.Average2(column_pair);
  V cross = arithmetic.Average4(row_pair, column_pair);
  V diagonal = arithmetic.Average4(arithmetic.MakePair(north_west, north_east),
                                   arithmetic.MakePair(south_west, south_east));
  if (border) {
    const auto edge = hn::Or(border->left_edge, border->right_edge);
    const auto two = [&](V a, V b) PRISMO_INLINE { return arithmetic.Average2(arithmetic.MakePair(a, b)); };
    if (border->edge_row) {
      cross = hn::IfThenElse(edge, two(north, west), horizontal);
      diagonal = hn::IfThenElse(edge, arithmetic.Average1(north_west), two(north_west, north_east));
      vertical = arithmetic.Average1(north);
    } else {
      cross = hn::IfThenElse(edge, vertical, cross);
      diagonal = hn::IfThenElse(edge, two(north_west, south_west), diagonal);
    }
    horizontal = hn::IfThenElse(edge, arithmetic.Average1(west), horizontal);
  }
  const typename A::D d;
  row_colour = AtGreenSites(d, starts_green, horizontal, own);
  green = AtGreenSites(d, starts_green, own, cross);
  other_colour = AtGreenSites(d, starts_green, vertical, diagonal);
}

// A block that touches the frame's border.
struct BorderBlock {
  bool edge_row;
  uint32_t width;
  size_t x;
};

// Sites of one vector of A's lanes from lane `lane` of the block on.
template <class A>
HWY_INLINE void InterpolatePart(const A& arithmetic, const typename A::T* const (&lines)[3], size_t lane,
                                bool starts_green, const BorderBlock* border, typename A::V& row_colour,
                                typename A::V& green, typename A::V& other_colour) {
  using D = typename A::D;
  if (border) {
    const size_t x = border->x + lane;
    const BorderSites<D> sites{border->edge_row, OutsideColumns(D(), x, {1, border->width}),
                               OutsideColumns(D(), x, {0, border->width - 1})};
    Interpolate(arithmetic, lines, lane, starts_green, &sites, row_colour, green, other_colour);
  } else {
    Interpolate<A>(arithmetic, lines, lane, starts_green, nullptr, row_colour, green, other_colour);
  }
}

// One block, reduced to bytes.
template <class A>
HWY_INLINE void Block(const A& arithmetic, const typename A::T* const (&lines)[3], bool starts_green,
                      const BorderBlock* border, V8& row_colour, V8& green, V8& other_colour) {
  constexpr size_t kPart = hn::MaxLanes(typename A::D());
  const auto part = [&](size_t lane, auto& r, auto& g, auto& o) PRISMO_INLINE {
    InterpolatePart(arithmetic, lines, lane, starts_green, border, r, g, o);
  };
  if constexpr (sizeof(hn::TFromD<typename A::D>) == 1) {
    part(0, row_colour, green, other_colour);
#if HWY_TARGET != HWY_SCALAR
  } else if constexpr (sizeof(hn::TFromD<typename A::D>) == 2) {
    V16 r0, g0, o0, r1, g1, o1;
    part(0, r0, g0, o0);
    part(kPart, r1, g1, o1);
    row_colour = HighBytes(r0, r1);
    green = HighBytes(g0, g1);
    other_colour = HighBytes(o0, o1);
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

// The pixel of a row's first or last column, where `inside` is the column beside it: averages over the
// neighbours inside the frame, and green over the two along the border.
template <typename T, class Sink>
void StoreAtEdge(const T* const (&lines)[3], size_t x, size_t inside, const RowRole& role, uint32_t shift,
                 const Sink& sink) {
  const auto average = [shift](uint32_t log2_count, uint32_t sum) {
    return static_cast<uint8_t>(sum >> (shift + log2_count) % 32);
  };
  const auto pair = [&](size_t column) {
    return average(1, uint32_t{lines[0][column]} + uint32_t{lines[2][column]});
  };
  const uint8_t own = average(0, lines[1][x]), vertical = pair(x);
  const bool green_site = StartsGreen(role, x);
  const uint8_t row_colour = green_site ? average(0, lines[1][inside]) : own;
  const uint8_t green = green_site ? own : vertical;
  const uint8_t other_colour = green_site ? vertical : pair(inside);
  if (role.blue) {
    sink.StorePixel(x, row_colour, green, other_colour);
  } else {
    sink.StorePixel(x, other_colour, green, row_colour);
  }
}

// One block inside the frame.
template <Order kOrder, class A>
HWY_INLINE void InnerBlock(const A& arithmetic, const typename A::T* const (&lines)[3], bool starts_green,
                           V8& row_colour, V8& green, V8& other_colour) {
  static_assert(kOrder == Order::kPixels);
  Block(arithmetic, lines, starts_green, nullptr, row_colour, green, other_colour);
}

#if HWY_TARGET != HWY_SCALAR
template <bool kOdd>
HWY_INLINE V16 BytesOfWords(V16 v) {
  if constexpr (kOdd) return hn::ShiftRight<8>(v);
  return hn::And(v, hn::Set(D16(), 0xFF));
}

// Bytes inside the frame: two neighbouring sites are a word, one of them green. Sums are words, computed for
// one of the two. A site's neighbours are the other site of its word and one in a word beside it.
template <bool kStartsGreen>
struct SitePairs {
  static constexpr bool kGreenOdd = !kStartsGreen;
  // The words beside in which neighbours of the other sites are green, and those of green ones are not.
  static constexpr int kOfGreen = kStartsGreen ? 1 : -1, kOfColour = -kOfGreen;

  V16 own;
  V16 green_beside, colour_beside;        // samples of the row
  V16 green_column;                       // sums of the samples above and below: of the other sites
  V16 other_column, other_column_beside;  // of green ones

  HWY_INLINE void Interpolate(V8& row_colour, V8& green, V8& other_colour) const {
    const V16 greens = hn::Add(BytesOfWords<kGreenOdd>(own), green_beside);
    const V16 colours = hn::Add(BytesOfWords<!kGreenOdd>(own), colour_beside);
    row_colour = AtSites(AverageAtGreen(colours), own);
    green = AtSites(own, AverageOf4(hn::Add(greens, green_column)));
    other_colour =
        AtSites(AverageAtGreen(other_column), AverageOf4(hn::Add(other_column, other_column_beside)));
  }

 private:
  // Averages in the byte of a word that they are for.
  static HWY_INLINE V16 AverageAtGreen(V16 sum_of_2) {
    if constexpr (kGreenOdd) return hn::ShiftLeft<7>(sum_of_2);
    return hn::ShiftRight<1>(sum_of_2);
  }
  static HWY_INLINE V16 AverageOf4(V16 sum) {
    if constexpr (kGreenOdd) return hn::ShiftRight<2>(sum);
    return hn::ShiftLeft<6>(sum);
  }
  static HWY_INLINE V8 AtSites(V16 green, V16 others) {
    const D8 d;
    return AtGreenSites(d, kStartsGreen, hn::BitCast(d, green), hn::BitCast(d, others));
  }
};

// Of the block at `lines`.
template <bool kStartsGreen>
HWY_INLINE SitePairs<kStartsGreen> LoadSitePairs(const uint8_t* const (&lines)[3]) {
  using Pairs = SitePairs<kStartsGreen>;
  constexpr bool kGreenOdd = Pairs::kGreenOdd;
  const auto words = [&](size_t line, ptrdiff_t dx) PRISMO_INLINE {
    return hn::BitCast(D16(), LoadedOnce(hn::LoadU(D8(), lines[line] + dx)));
  };
  const auto low_bytes = [&](size_t line, ptrdiff_t dx)
                             PRISMO_INLINE { return BytesOfWords<false>(words(line, dx)); };
  constexpr ptrdiff_t kGreenBeside = 2 * Pairs::kOfGreen + (kGreenOdd ? 1 : 0);
  constexpr ptrdiff_t kColourBeside = 2 * Pairs::kOfColour + (kGreenOdd ? 0 : 1);
  const V16 above = words(0, 0), below = words(2, 0);
  return {words(1, 0),
          low_bytes(1, kGreenBeside),
          low_bytes(1, kColourBeside),
          hn::Add(BytesOfWords<!kGreenOdd>(above), BytesOfWords<!kGreenOdd>(below)),
          hn::Add(BytesOfWords<kGreenOdd>(above), BytesOfWords<kGreenOdd>(below)),
          hn::Add(low_bytes(0, kGreenBeside), low_bytes(2, kGreenBeside))};
}

template <Order kOrder, bool kStartsGreen>
HWY_INLINE void InnerBlock(const Bytes&, const uint8_t* const (&lines)[3], std::bool_constant<kStartsGreen>,
                           V8& row_colour, V8& green, V8& other_colour) {
  static_assert(kOrder == Order::kPixels);
  LoadSitePairs<kStartsGreen>(lines).Interpolate(row_colour, green, other_colour);
}

// Words inside the frame: each lane of a sum is multiplied as averages are, with the factor for its number of
// samples.
template <bool kStartsGreen>
class WordSites {
 public:
  HWY_INLINE explicit WordSites(const Words& arithmetic)
      : row_factor_(AtSites(arithmetic.factor2, arithmetic.factor1)),
        green_factor_(AtSites(arithmetic.factor1, arithmetic.factor4)),
        other_factor_(AtSites(arithmetic.factor2, arithmetic.factor4)) {}

  // From samples of the row and sums of those above and below, and of the two beside each of these.
  HWY_INLINE void Interpolate(V16 own, V16 columns, V16 beside, V16 diagonal, V16& row_colour, V16& green,
                              V16& other_colour) const {
    row_colour = hn::Mul(AtSites(beside, own), row_factor_);
    green = hn::Mul(AtSites(own, hn::Add(beside, columns)), green_factor_);
    other_colour = hn::Mul(AtSites(columns, diagonal), other_factor_);
  }

 private:
  static HWY_INLINE V16 AtSites(V16 green, V16 others) {
    return AtGreenSites(D16(), kStartsGreen, green, others);
  }

  const V16 row_factor_, green_factor_, other_factor_;
};

template <Order kOrder, bool kStartsGreen>
HWY_INLINE void InnerBlock(const Words& arithmetic, const uint16_t* const (&lines)[3],
                           std::bool_constant<kStartsGreen>, V8& row_colour, V8& green, V8& other_colour) {
  const WordSites<kStartsGreen> sites(arithmetic);
  const auto part = [&](size_t lane, V16& r, V16& g, V16& o) PRISMO_INLINE {
    const auto load = [&](size_t line, ptrdiff_t dx) PRISMO_INLINE {
      return arithmetic.Load(lines[line] + static_cast<ptrdiff_t>(lane) + dx);
    };
    const auto columns = [&](ptrdiff_t dx) PRISMO_INLINE { return hn::Add(load(0, dx), load(2, dx)); };
    sites.Interpolate(load(1, 0), columns(0), hn::Add(load(1, -1), load(1, 1)),
                      hn::Add(columns(-1), columns(1)), r, g, o);
  };
  V16 r0, g0, o0, r1, g1, o1;
  part(0, r0, g0, o0);
  part(kLanes / 2, r1, g1, o1);
  row_colour = HighBytes<kOrder>(r0, r1);
  green = HighBytes<kOrder>(g0, g1);
  other_colour = HighBytes<kOrder>(o0, o1);
}

#endif

#undef PRISMO_BLOCKS_IN_A_ROW
#if PRISMO_BYTE_PERMUTES
#define PRISMO_BLOCKS_IN_A_ROW 1

// Blocks inside the frame, one after the other: each sample is loaded once instead of three times, as most of
// those loads would cross lines of memory. They cost most beside streaming stores.

// A vector of a row between those before and behind it.
struct ThreeVectors {
  V16 before, here, behind;

  HWY_INLINE void Next(V16 next) {
    before = here;
    here = behind;
    behind = next;
  }
};

// Where the words of a vector, in kOrder, come from if they stand kBy words further on, or back, in it and
// the vector behind, or before and it. `even` and `odd` are their bytes, for the low bytes of words.
template <int kBy, Order kOrder>
struct WordsFrom {
  alignas(64) uint16_t word[32];
  alignas(64) uint8_t even[64];
  alignas(64) uint8_t odd[64];

  constexpr WordsFrom() : word{}, even{}, odd{} {
    for (int i = 0; i < 32; ++i) {
      const int from = kBy < 0 ? 32 + i + kBy : i + kBy;
      const size_t to = PlaceOf<kOrder>(static_cast<size_t>(2 * i)) / 2;
      word[to] = static_cast<uint16_t>(from);
      even[2 * to] = static_cast<uint8_t>(2 * from);
      odd[2 * to] = static_cast<uint8_t>(2 * from + 1);
    }
  }
};

template <int kBy, Order kOrder = Order::kPixels>
HWY_INLINE V16 WordsAt(const ThreeVectors& v) {
  static constexpr WordsFrom<kBy, kOrder> kFrom;
  if constexpr (kBy == 0 && kOrder == Order::kPixels) return v.here;
  const __m512i from = _mm512_load_si512(kFrom.word);
  if constexpr (kBy == 0) return V16{_mm512_permutexvar_epi16(from, v.here.raw)};
  if constexpr (kBy < 0) return V16{_mm512_permutex2var_epi16(v.before.raw, from, v.here.raw)};
  return V16{_mm512_permutex2var_epi16(v.here.raw, from, v.behind.raw)};
}

// The even or odd bytes of words that stand beside these, as words.
template <int kBy, Order kOrder, bool kOdd>
HWY_INLINE V16 BytesAt(const ThreeVectors& v) {
  static constexpr WordsFrom<kBy, kOrder> kFrom;
  constexpr __mmask64 kLowBytes = 0x5555555555555555;
  const __m512i from = _mm512_load_si512(kOdd ? kFrom.odd : kFrom.even);
  if constexpr (kBy < 0) {
    return V16{_mm512_maskz_permutex2var_epi8(kLowBytes, v.before.raw, from, v.here.raw)};
  }
  return V16{_mm512_maskz_permutex2var_epi8(kLowBytes, v.here.raw, from, v.behind.raw)};
}

// They read a vector of samples before the first and one behind the last column.
template <class A, bool kStartsGreen, Order kOrder>
class InARow;

template <bool kStartsGreen, Order kOrder>
class InARow<Bytes, kStartsGreen, kOrder> {
 public:
  HWY_INLINE InARow(const Bytes&, const uint8_t* up, const uint8_t* mid, const uint8_t* down)
      : up_(up - kLanes), mid_(mid - kLanes), down_(down - kLanes) {
    Load();
    Load();
  }

  HWY_INLINE void Compute(V8& row_colour, V8& green, V8& other_colour) {
    ReadAhead(down_);
    Load();
    const Pairs pairs{WordsAt<0, kOrder>(row_),
                      BytesAt<Pairs::kOfGreen, kOrder, kGreenOdd>(row_),
                      BytesAt<Pairs::kOfColour, kOrder, !kGreenOdd>(row_),
                      WordsAt<0, kOrder>(green_columns_),
                      WordsAt<0, kOrder>(other_columns_),
                      WordsAt<Pairs::kOfGreen, kOrder>(other_columns_)};
    pairs.Interpolate(row_colour, green, other_colour);
  }

 private:
  using Pairs = SitePairs<kStartsGreen>;
  static constexpr bool kGreenOdd = Pairs::kGreenOdd;

  HWY_INLINE void Load() {
    const auto next = [](const uint8_t*& line) PRISMO_INLINE {
      const V16 v = hn::BitCast(D16(), hn::LoadU(D8(), line));
      line = LoadedAlone(line + kLanes);
      return v;
    };
    const V16 above = next(up_), below = next(down_);
    row_.Next(next(mid_));
    other_columns_.Next(hn::Add(BytesOfWords<kGreenOdd>(above), BytesOfWords<kGreenOdd>(below)));
    green_columns_.Next(hn::Add(BytesOfWords<!kGreenOdd>(above), BytesOfWords<!kGreenOdd>(below)));
  }

  const uint8_t *up_, *mid_, *down_;
  ThreeVectors row_;
  // Sums of the samples above and below, at green sites and at others.
  ThreeVectors other_columns_, green_columns_;
};

// Words, in two vectors a block.
template <bool kStartsGreen, Order kOrder>
class InARow<Words, kStartsGreen, kOrder> {
 public:
  HWY_INLINE InARow(const Words& arithmetic, const uint16_t* up, const uint16_t* mid, const uint16_t* down)
      : up_(up - kVector), mid_(mid - kVector), down_(down - kVector), sites_(arithmetic) {
    Load(0);
    Load(1);
    MoveBy(2);
  }

  HWY_INLINE void Compute(V8& row_colour, V8& green, V8& other_colour) {
    ReadAhead(down_);
    V16 r0, g0, o0, r1, g1, o1;
    Load(0);
    Interpolate(r0, g0, o0);
    Load(1);
    Interpolate(r1, g1, o1);
    MoveBy(2);
    row_colour = HighBytes<kOrder>(r0, r1);
    green = HighBytes<kOrder>(g0, g1);
    other_colour = HighBytes<kOrder>(o0, o1);
  }

 private:
  static constexpr size_t kVector = kLanes / 2;

  HWY_INLINE void Load(size_t vector) {
    const auto from = [vector](const uint16_t* line)
                          PRISMO_INLINE { return hn::LoadU(D16(), line + vector * kVector); };
    row_.Next(from(mid_));
    columns_.Next(hn::Add(from(up_), from(down_)));
  }
  HWY_INLINE void MoveBy(size_t vectors) {
    up_ = LoadedAlone(up_ + vectors * kVector);
    mid_ = LoadedAlone(mid_ + vectors * kVector);
    down_ = LoadedAlone(down_ + vectors * kVector);
  }

  HWY_INLINE void Interpolate(V16& row_colour, V16& green, V16& other_colour) const {
    sites_.Interpolate(row_.here, columns_.here, hn::Add(WordsAt<-1>(row_), WordsAt<1>(row_)),
                       hn::Add(WordsAt<-1>(columns_), WordsAt<1>(columns_)), row_colour, green, other_colour);
  }

  const uint16_t *up_, *mid_, *down_;
  const WordSites<kStartsGreen> sites_;
  ThreeVectors row_, columns_;
};

// Blocks from column x on whose lines are fetched ahead for plain stores.
template <class Blocks, class Sink, StoreKind kStores>
struct PreparedBlocks {
  Blocks blocks;
  Sink sink;
  size_t x;

  HWY_INLINE void operator()(size_t block, V8& row_colour, V8& green, V8& other_colour) {
    // 0.93 of the time; with three bytes a pixel nothing is gained.
    if constexpr (kStores == StoreKind::kCached && Sink::kPixelBytes == 4)
      sink.PrepareBlock(x + block * kLanes);
    blocks.Compute(row_colour, green, other_colour);
  }
};

#else
#define PRISMO_BLOCKS_IN_A_ROW 0
#endif

template <class Sink>
HWY_INLINE Sink MakeSink(const RowTarget& target) {
  return {target.plane[0], target.first_column};
}
template <>
HWY_INLINE PlanarSink MakeSink<PlanarSink>(const RowTarget& target) {
  return {{target.plane[0], target.plane[1], target.plane[2]}, target.first_column};
}

// In which order blocks inside the frame have their pixels: what costs least with what the sink does.
template <class A, class Sink>
inline constexpr Order kOrderFor =
    std::is_same_v<A, Words>&& std::is_same_v<Sink, BgraSink> && !kBytePermutes ? Order::kPacked
                                                                                : Order::kPixels;

#if PRISMO_BLOCKS_IN_A_ROW
template <class Sink>
inline constexpr Order kOrderInARow = Order::kAcross;
template <>
inline constexpr Order kOrderInARow<PlanarSink> = Order::kPixels;
#endif

template <class A, class Sink, StoreKind kStores>
void Row(const BilinearLines& info, const BayerRow& row, const RowTarget& target) {
  using T = typename A::T;
  const A arithmetic(info.shift);
  const Sink sink = MakeSink<Sink>(target);
  if (kStores == StoreKind::kStreaming && sink.PixelsToLine(row.columns.begin) == kCacheLine) {
    return Row<A, Sink, StoreKind::kCached>(info, row, target);
  }
  const T* const lines[3] = {static_cast<const T*>(LoadedAlone(info.up)),
                             static_cast<const T*>(LoadedAlone(info.mid)),
                             static_cast<const T*>(LoadedAlone(info.down))};
  // In the top and bottom row every block is one of the border. Elsewhere two pixels that are stored once
  // more take less time than two blocks of the border.
  const bool mends_edges =
      kStores == StoreKind::kCached && row.inside && row.columns.begin == 0 && row.columns.end == row.width;
  const ColumnRange inner_columns = info.edge     ? ColumnRange{row.width, row.width}
                                    : mends_edges ? ColumnRange{0, row.width}
                                                  : ColumnRange{1, row.width - 1};
  const auto border = [&](const T* const(&at)[3], size_t x, bool starts_green, V8& row_colour, V8& green,
                          V8& other_colour) PRISMO_INLINE {
    const BorderBlock block{info.edge, row.width, x};
    Block(arithmetic, at, starts_green, &block, row_colour, green, other_colour);
  };
  const auto cover = [&]() PRISMO_INLINE {
#if PRISMO_BLOCKS_IN_A_ROW
    if constexpr (!std::is_same_v<A, WideWords>) {
      constexpr Order kOrder = kOrderInARow<Sink>;
      if (row.inside && row.width >= kLanes && simd::CrossingLoadsAreSlow()) {
        return CoverColumns<kStores, true, kOrder>(
            row, inner_columns, sink,
            [&](size_t x, size_t, auto starts_green) PRISMO_INLINE {
              using Blocks = InARow<A, decltype(starts_green)::value, kOrder>;
              return PreparedBlocks<Blocks, Sink, kStores>{
                  Blocks(arithmetic, lines[0] + x, lines[1] + x, lines[2] + x), sink, x};
            },
            WindowedBorder<T, 3, decltype(border)>{lines, row, border});
      }
    }
#endif
    constexpr Order kOrder = kOrderFor<A, Sink>;
    CoverRow<kStores, kOrder>(
        lines, row, inner_columns, sink,
        [arithmetic](const T* const(&at)[3], auto starts_green, V8& row_colour, V8& green, V8& other_colour)
            PRISMO_INLINE {
              InnerBlock<kOrder>(arithmetic, at, starts_green, row_colour, green, other_colour);
            },
        border);
  };
  cover();
  if (mends_edges) {
    const uint32_t shift = sizeof(T) == 1 ? 0 : info.shift;
    StoreAtEdge(lines, 0, 1, row.role, shift, sink);
    StoreAtEdge(lines, row.width - 1, row.width - 2, row.role, shift, sink);
  }
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

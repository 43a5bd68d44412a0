// Greens of the red and blue sites of a mosaic, for the adaptive demosaic. Compiled once per instruction set.
#if defined(PRISMO_BAYER_GREENS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_BAYER_GREENS_INL_H_
#undef PRISMO_BAYER_GREENS_INL_H_
#else
#define PRISMO_BAYER_GREENS_INL_H_
#endif

#include <cstddef>

#include "bayer/acpi_rows.h"
#include "bayer/row_cover-inl.h"
#include "simd/targets.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

// Green and other sites alternate, so one vector of 16-bit lanes holds all sites of one kind of a block:
// those of its even bytes or those of its odd ones. With one lane there is nothing to tell apart: each block
// is one site.
using DSite = DI16;
using VSite = VI16;
inline constexpr ptrdiff_t kSites = hn::MaxLanes(DSite());

HWY_INLINE VSite ClampToByte(VSite v) {
  return hn::Min(hn::Max(v, hn::Zero(DSite())), hn::Set(DSite(), 255));
}

HWY_INLINE VSite Mean(VSite a, VSite b) { return hn::ShiftRight<1>(hn::Add(a, b)); }
HWY_INLINE VSite Mean(VSite a, VSite b, VSite c, VSite d) {
  return hn::ShiftRight<2>(hn::Add(hn::Add(a, b), hn::Add(c, d)));
}

// One of two directions to interpolate along.
struct Direction {
  VSite gradient;
  VSite estimate;  // times four

  // Neighbours a and b, the second difference of the channel that is known at all sites.
  HWY_INLINE Direction(VSite a, VSite b, VSite laplacian, VSite four_times)
      : gradient(hn::Add(hn::Abs(hn::Sub(a, b)), hn::Abs(laplacian))), estimate(four_times) {}
};

// The estimate along the direction of the smaller gradient; the mean of both on a tie. All intermediate
// values fit 16 bits.
HWY_INLINE VSite Smoother(const Direction& a, const Direction& b) {
  // Twice the better one, or the sum of both.
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4
  // Their sum; their difference, signed by that of the gradients, makes it twice the better one.
  const VSite from_a = hn::Sub(b.estimate, a.estimate), sign = hn::Sub(a.gradient, b.gradient);
#if HWY_TARGET == HWY_AVX2
  const VSite change{_mm256_sign_epi16(from_a.raw, sign.raw)};
#else
  const VSite change{_mm_sign_epi16(from_a.raw, sign.raw)};
#endif
  const VSite twice = hn::Add(hn::Add(a.estimate, b.estimate), change);
#else
  const VSite twice = hn::Add(hn::IfThenElse(hn::Gt(a.gradient, b.gradient), b.estimate, a.estimate),
                              hn::IfThenElse(hn::Gt(b.gradient, a.gradient), a.estimate, b.estimate));
#endif
  return hn::ShiftRight<3>(twice);
}

inline constexpr ptrdiff_t kSplitColumns = 2 * kSites;

// Samples at even columns, and at odd ones.
struct Halves {
  VSite even, odd;
};

// From column x on, which is even.
HWY_INLINE Halves SplitBlock(const RowToSplit& row, ptrdiff_t x) {
#if HWY_TARGET == HWY_SCALAR
  const Halves halves{hn::Set(DSite(), row.line[x]), hn::Set(DSite(), row.line[x + 1])};
#else
  hwy::Prefetch(row.line + x + row.next_row);
  const auto both = hn::BitCast(D16(), hn::LoadU(D8(), row.line + x));
  const Halves halves{hn::BitCast(DSite(), hn::And(both, hn::Set(D16(), 255))),
                      hn::BitCast(DSite(), hn::ShiftRight<8>(both))};
#endif
  hn::StoreU(halves.even, DSite(), row.words + x / 2);
  hn::StoreU(halves.odd, DSite(), row.words + x / 2 + kSplitPitch);
  return halves;
}

// The outermost columns, which whole blocks from anywhere on may leave out, and a word beside each end: what
// is outside the frame there has the samples of the neighbours inside, for averages.
inline void SplitEnds(const RowToSplit& row) {
  const auto [begin, end] = row.columns;
  if (begin == end) return;
  row.words[kSplitPitch + begin / 2 - 1] = row.line[begin + 1];
  row.words[end / 2] = row.line[end - 2];
  if (end - begin >= kSplitColumns) {
    SplitBlock(row, begin);
    SplitBlock(row, end - kSplitColumns);
    return;
  }
  for (size_t x = begin; x < end; x += 2) {
    row.words[x / 2] = row.line[x];
    row.words[kSplitPitch + x / 2] = row.line[x + 1];
  }
}

// What stands one column to the west and one to the east of some sites.
struct Neighbours {
  VSite west, east;
};

// Words of a row, from a block's first column on.
struct BlockWords {
  const int16_t* from[2];  // columns 0, 2, 4 ... of the block, and 1, 3, 5 ...

  // Every second column from `column` of the block on.
  HWY_INLINE VSite At(ptrdiff_t column) const { return hn::LoadU(DSite(), from[column & 1] + (column >> 1)); }
  // The columns beside these.
  HWY_INLINE Neighbours Beside(ptrdiff_t column) const { return {At(column - 1), At(column + 1)}; }
};

// Samples of a row around its sites, which are at its odd columns or the even ones.
struct OwnRow {
  VSite own, own_west, own_east;  // two columns apart
  Neighbours beside;
};

template <bool kOdd>
HWY_INLINE OwnRow LoadOwnRow(const BlockWords& at) {
  constexpr ptrdiff_t kFirst = kOdd ? 1 : 0;
  return {LoadedOnce(at.At(kFirst)),
          at.At(kFirst - 2),
          at.At(kFirst + 2),
          {LoadedOnce(at.At(kFirst - 1)), LoadedOnce(at.At(kFirst + 1))}};
}

// Narrower vectors come with 16 registers, which are too few to carry neighbours from block to block, or to
// make greens and pixels in one pass (measured: 1.02 to 1.04 times the time of two).
#undef PRISMO_MANY_REGISTERS
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
#define PRISMO_MANY_REGISTERS 1
#else
#define PRISMO_MANY_REGISTERS 0
#endif

#if PRISMO_MANY_REGISTERS
// Sites of two neighbouring blocks, from one of the first on.
template <ptrdiff_t kFirst>
HWY_INLINE VSite Across(VSite a, VSite b) {
  alignas(64) static constexpr auto kPlaces = [] {
    struct {
      uint16_t index[kSites];
    } places{};
    for (int i = 0; i < kSites; ++i) places.index[i] = static_cast<uint16_t>(i + kFirst);
    return places;
  }();
  return VSite{_mm512_permutex2var_epi16(a.raw, _mm512_load_si512(kPlaces.index), b.raw)};
}

// The neighbours of sites, block by block, of which each vector is given once: the others come out of
// registers. The west ones are at the block's even columns if kAhead, else the east ones are at its odd
// columns.
template <bool kAhead>
class CarriedNeighbours {
 public:
  // Those of the first block if kAhead, else its outermost one in the west, in all lanes.
  HWY_INLINE explicit CarriedNeighbours(VSite first) : carried_(first) {}

  // Given those of the next block if kAhead, else of the present one.
  HWY_INLINE Neighbours Next(VSite given) {
    const VSite before = carried_;
    carried_ = given;
    constexpr ptrdiff_t kFirst = kAhead ? 1 : kSites - 1;
    const VSite shifted = Across<kFirst>(before, given);
    return kAhead ? Neighbours{before, shifted} : Neighbours{shifted, given};
  }

 private:
  VSite carried_;
};

// The same for words of a row.
template <bool kAhead>
class CarriedWords {
 public:
  HWY_INLINE explicit CarriedWords(const BlockWords& first)
      : neighbours_(kAhead ? hn::LoadU(DSite(), first.from[0]) : hn::Set(DSite(), first.from[1][-1])) {}

  HWY_INLINE Neighbours Next(const BlockWords& at) {
    return neighbours_.Next(hn::LoadU(DSite(), kAhead ? at.from[0] + kSites : at.from[1]));
  }

 private:
  CarriedNeighbours<kAhead> neighbours_;
};

// What LoadOwnRow gives for blocks that follow each other.
template <bool kOdd>
class CarriedOwnRow {
 public:
  HWY_INLINE explicit CarriedOwnRow(const BlockWords& first)
      : before_(hn::Set(DSite(), first.from[kOdd][-1])), own_(first.At(kOdd ? 1 : 0)), beside_(first) {}

  HWY_INLINE OwnRow Next(const BlockWords& at) {
    const VSite own = own_;
    own_ = hn::LoadU(DSite(), at.from[kOdd] + kSites);
    const OwnRow row{own, Across<kSites - 1>(before_, own), Across<1>(own, own_), beside_.Next(at)};
    before_ = own;
    return row;
  }

 private:
  VSite before_, own_;
  CarriedWords<kOdd> beside_;
};
#endif

// What the greens of a row's sites are computed from, which are at its odd columns or the even ones.
template <bool kOdd>
class GreenSource {
 public:
  static constexpr bool kOddColumns = kOdd;

  HWY_INLINE GreenSource(const GreenLines& lines, const BayerRow& row)
      : ahead_(lines.ahead), last_(row.width / 2 - 1), bilinear_(lines.bilinear) {
    for (size_t i = 0; i < 4; ++i) even_[i] = LoadedAlone(lines.raw[i]);
    ahead_.line = LoadedAlone(ahead_.line);
    ahead_.next_row = LoadedAlone(ahead_.next_row);
    ahead_.words = LoadedAlone(ahead_.words);
    SplitEnds(ahead_);
  }

  // The row itself, from site i on.
  HWY_INLINE BlockWords Own(ptrdiff_t i) const { return {{even_[2] + i, even_[2] + kSplitPitch + i}}; }

  // The even columns of row y - 2 + i.
  HWY_INLINE const int16_t* Even(size_t i) const { return even_[i]; }

  // Whether the block from site i on is more than row y + 2 has, which has nothing for bilinear rows.
  HWY_INLINE bool IsEdge(ptrdiff_t i) const { return i + kSites > ahead_.columns.end / 2; }

  // Of sites i to i + kSites - 1, if IsEdge(i) is `edge`. At the frame's sides they have to be mended.
  HWY_INLINE VSite Block(ptrdiff_t i, bool edge) const { return Block(i, edge, LoadOwnRow<kOdd>(Own(i))); }
  HWY_INLINE VSite Block(ptrdiff_t i, bool edge, const OwnRow& row) const {
    const auto load = [i](const int16_t* from) PRISMO_INLINE { return hn::LoadU(DSite(), from + i); };
    const auto once = [&](const int16_t* from) PRISMO_INLINE { return LoadedOnce(load(from)); };
    const VSite souther = SplitAhead(i, edge);
    const VSite twice = hn::Add(row.own, row.own);
    const VSite north = once(even_[1] + kSame), south = once(even_[3] + kSame);
    const auto [west, east] = row.beside;
    const VSite down = hn::Add(north, south), across = hn::Add(west, east);
    const VSite vertical = hn::Sub(twice, hn::Add(load(even_[0] + kSame), souther));
    const VSite horizontal = hn::Sub(twice, hn::Add(row.own_west, row.own_east));
    const VSite g =
        ClampToByte(Smoother({north, south, vertical, hn::Add(hn::Add(down, down), vertical)},
                             {west, east, horizontal, hn::Add(hn::Add(across, across), horizontal)}));
    return edge && bilinear_ ? Mean(north, south, west, east) : g;
  }

  // The sites in the frame's two outermost columns on each side are bilinear: in the outermost ones along the
  // side.
  HWY_INLINE void MendSides(ColumnRange columns, int16_t* words) const {
    const auto mend = [&](size_t i) PRISMO_INLINE {
      const int16_t* const west = even_[2] + i + (kOdd ? 0 : kSplitPitch - 1);
      const int along = even_[1][kSame + i] + even_[3][kSame + i];
      const bool outermost = i == (kOdd ? last_ : 0);
      words[i] = static_cast<int16_t>(outermost ? along >> 1 : (along + west[0] + west[1]) >> 2);
    };
    if (columns.begin <= 1) mend(0);
    if (columns.end > 2 * last_) mend(last_);
  }

  // From now on sites are counted from site i on, where only inner ones follow. With pointers that move no
  // index takes a register from them.
  HWY_INLINE void MoveTo(ptrdiff_t i) {
    for (const int16_t*& row : even_) row = LoadedAlone(row + i);
    ahead_.line = LoadedAlone(ahead_.line + 2 * i);
    ahead_.words = LoadedAlone(ahead_.words + i);
  }

 private:
  static constexpr ptrdiff_t kSame = kOdd ? kSplitPitch : 0;  // from the even columns to the sites'

  // Splits row y + 2 in passing: beside the stores of pixels that are under way, its own would fill the
  // queue. Returns its sites. At an edge SplitEnds has done it.
  HWY_INLINE VSite SplitAhead(ptrdiff_t i, bool edge) const {
    if (edge) return hn::LoadU(DSite(), ahead_.words + kSame + i);
    const Halves halves = SplitBlock(ahead_, 2 * i);
    return kOdd ? halves.odd : halves.even;
  }

  const int16_t* even_[4];
  RowToSplit ahead_;
  uint32_t last_;
  bool bilinear_;
};

template <class Source>
HWY_INLINE void StoreGreens(const Source& source, const BayerRow& row, int16_t* words) {
  ptrdiff_t i = row.columns.begin / 2;
  const ptrdiff_t end = (row.columns.end + 1) / 2;
#if PRISMO_MANY_REGISTERS
  if (simd::CrossingLoadsAreSlow()) {
    CarriedOwnRow<Source::kOddColumns> own(source.Own(i));
    for (; i < end && !source.IsEdge(i); i += kSites) {
      hn::StoreU(source.Block(i, false, own.Next(source.Own(i))), DSite(), words + i);
    }
  }
#endif
  for (; i < end && !source.IsEdge(i); i += kSites) {
    hn::StoreU(source.Block(i, false), DSite(), words + i);
  }
  for (; i < end; i += kSites) hn::StoreU(source.Block(i, true), DSite(), words + i);
  source.MendSides(row.columns, words);
}

#if PRISMO_MANY_REGISTERS
// Greens that are made in step with the pixels of the row above, a block before the pixels need them, which
// otherwise wait for them (1.0 to 1.1 times the time). The pixels take their greens from here: what has just
// been stored cannot be loaded from another place until every store under way has reached memory.
template <class Source>
class GreensInStep {
 public:
  // For blocks of pixels from site `first` on. The greens of the first of them and of the row's other sites
  // are made now.
  HWY_INLINE GreensInStep(const GreenLines& lines, const BayerRow& row, int16_t* words, ptrdiff_t first,
                          size_t blocks)
      : source_(lines, row), words_(words) {
    const ptrdiff_t begin = first + kFirst, behind = begin + static_cast<ptrdiff_t>(blocks) * kSites;
    const ptrdiff_t end = (row.columns.end + 1) / 2;
    for (ptrdiff_t i = row.columns.begin / 2; i < end;) {
      hn::StoreU(source_.Block(i, source_.IsEdge(i)), DSite(), words + i);
      i += kSites;
      if (i >= begin && i < behind) i = behind;
    }
    source_.MendSides(row.columns, words);
    if (blocks == 0) return;
    left_ = blocks;
    east_ = hn::Set(DSite(), words[begin - 1]);
    MoveTo(first);
    Make(0);
  }

  // Makes those of the next block, if there is one, and goes there. Until then samples and greens stand at
  // Even() and Words(), from the present block's first column on.
  HWY_INLINE void Next() {
    if (--left_ != 0) Make(kSites);
    MoveTo(kSites);
  }

  HWY_INLINE const int16_t* Even(size_t i) const { return source_.Even(i); }
  HWY_INLINE const int16_t* Words() const { return words_; }

  // On both sides of the columns between the block's sites.
  HWY_INLINE Neighbours Beside() const { return {west_, east_}; }

 private:
  // Those of the block that starts i sites further on.
  HWY_INLINE void Make(ptrdiff_t i) {
    const VSite greens = source_.Block(kFirst + i, false);
    hn::StoreU(greens, DSite(), words_ + kFirst + i);
    // The last lane of the block before, then those of this one but its last.
    west_ = Across<kSites - 1>(east_, greens);
    east_ = greens;
  }
  HWY_INLINE void MoveTo(ptrdiff_t i) {
    source_.MoveTo(i);
    words_ = LoadedAlone(words_ + i);
  }

  // In a block that begins with a green site, the first other one is needed with its neighbour to the east.
  static constexpr ptrdiff_t kFirst = Source::kOddColumns ? 0 : 1;

  Source source_;
  int16_t* words_;
  size_t left_ = 0;
  VSite west_ = hn::Zero(DSite()), east_ = west_;
};
#endif

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

// Greens of the red and blue sites of a mosaic, for the adaptive demosaic. Compiled once per instruction set.
#if defined(PRISMO_BAYER_GREENS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_BAYER_GREENS_INL_H_
#undef PRISMO_BAYER_GREENS_INL_H_
#else
#define PRISMO_BAYER_GREENS_INL_H_
#endif

#include <algorithm>
#include <cstddef>

#include "bayer/acpi_rows.h"
#include "bayer/row_cover-inl.h"

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

// The outermost columns, which whole blocks from anywhere on may leave out.
inline void SplitEnds(const RowToSplit& row) {
  const auto [begin, end] = row.columns;
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

// Greens of some sites, and twice their samples.
struct Greens {
  VSite green, twice_own;

  HWY_INLINE VSite Difference() const { return hn::Sub(twice_own, green); }

  // As of sites i to i + kSites - 1.
  HWY_INLINE void Store(ptrdiff_t i, int16_t* words) const {
    hn::StoreU(green, DSite(), words + i);
    hn::StoreU(Difference(), DSite(), words + kSplitPitch + i);
  }
};

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

  // The even columns of row y - 2 + i.
  HWY_INLINE const int16_t* Even(size_t i) const { return even_[i]; }

  // Of sites i to i + kSites - 1; at an edge, if they are not all inner ones.
  HWY_INLINE Greens Block(ptrdiff_t i, bool edge) const {
    const DSite d;
    const auto load = [i](const int16_t* from) PRISMO_INLINE { return hn::LoadU(DSite(), from + i); };
    const auto once = [&](const int16_t* from) PRISMO_INLINE { return LoadedOnce(load(from)); };
    constexpr ptrdiff_t kSame = kOdd ? kSplitPitch : 0, kEast = kOdd ? 1 : kSplitPitch;
    const VSite souther = SplitAhead(i, edge);
    const VSite own = once(even_[2] + kSame);
    const VSite twice = hn::Add(own, own);
    const VSite north = once(even_[1] + kSame), south = once(even_[3] + kSame);
    const VSite west = once(even_[2] + kEast - 1), east = once(even_[2] + kEast);
    const VSite down = hn::Add(north, south), across = hn::Add(west, east);
    const VSite vertical = hn::Sub(twice, hn::Add(load(even_[0] + kSame), souther));
    const VSite horizontal = hn::Sub(twice, hn::Add(load(even_[2] + kSame - 1), load(even_[2] + kSame + 1)));
    VSite g = ClampToByte(Smoother({north, south, vertical, hn::Add(hn::Add(down, down), vertical)},
                                   {west, east, horizontal, hn::Add(hn::Add(across, across), horizontal)}));
    if (edge) {
      // The frame's second columns from the sides, and the outermost ones, along the side.
      const auto first = static_cast<size_t>(i);
      const auto cross = OutsideColumns(d, first, bilinear_ ? ColumnRange{0, 0} : ColumnRange{1, last_});
      const auto side = OutsideColumns(d, first, kOdd ? ColumnRange{0, last_} : ColumnRange{1, last_ + 1});
      g = hn::IfThenElse(cross, Mean(north, south, west, east), g);
      g = hn::IfThenElse(side, Mean(north, south), g);
    }
    return {g, twice};
  }

  // From now on sites are counted from site i on, where only inner ones follow. With pointers that move no
  // index takes a register from them.
  HWY_INLINE void MoveTo(ptrdiff_t i) {
    for (const int16_t*& row : even_) row = LoadedAlone(row + i);
    ahead_.line = LoadedAlone(ahead_.line + 2 * i);
    ahead_.words = LoadedAlone(ahead_.words + i);
  }

  HWY_INLINE ColumnRange InnerSites() const {
    return bilinear_ ? ColumnRange{0, 0} : ColumnRange{1, std::min(last_, ahead_.columns.end / 2)};
  }

 private:
  // Splits row y + 2 in passing: beside the stores of pixels that are under way, its own would fill the
  // queue. Returns its sites. At an edge some of them lie where nothing is to be split.
  HWY_INLINE VSite SplitAhead(ptrdiff_t i, bool edge) const {
    const ptrdiff_t begin = ahead_.columns.begin, end = ahead_.columns.end;
    if (edge && (2 * i < begin || 2 * i + kSplitColumns > end)) {
      return hn::LoadU(DSite(), ahead_.words + (kOdd ? kSplitPitch : 0) + i);
    }
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
  const auto [inner_begin, inner_end] = source.InnerSites();
  for (; i < end && i < inner_begin; i += kSites) source.Block(i, true).Store(i, words);
  for (; i < end && i + kSites <= inner_end; i += kSites) source.Block(i, false).Store(i, words);
  for (; i < end; i += kSites) source.Block(i, true).Store(i, words);
}

// Narrower vectors come with 16 registers, which are too few to make greens and pixels in one pass (measured:
// 1.02 to 1.04 times the time of two).
#undef PRISMO_GREENS_IN_STEP
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
#define PRISMO_GREENS_IN_STEP 1
#else
#define PRISMO_GREENS_IN_STEP 0
#endif

#if PRISMO_GREENS_IN_STEP
// Greens that are made in step with the pixels of the row above, which need them at once: they take them from
// here, as what has just been stored cannot be loaded from another place until every store under way has
// reached memory.
template <class Source>
class GreensInStep {
 public:
  // For blocks of pixels from site `first` on. The greens of the row's other sites are made now.
  HWY_INLINE GreensInStep(const GreenLines& lines, const BayerRow& row, int16_t* words, ptrdiff_t first,
                          size_t blocks)
      : source_(lines, row), words_(words) {
    const ptrdiff_t begin = first + kFirst, behind = begin + static_cast<ptrdiff_t>(blocks) * kSites;
    const ptrdiff_t end = (row.columns.end + 1) / 2;
    const auto [inner_begin, inner_end] = source_.InnerSites();
    for (ptrdiff_t i = row.columns.begin / 2; i < end;) {
      source_.Block(i, i < inner_begin || i + kSites > inner_end).Store(i, words);
      i += kSites;
      if (i >= begin && i < behind) i = behind;
    }
    if (blocks == 0) return;
    green_[1] = hn::Set(DSite(), words[begin - 1]);
    difference_[1] = hn::Set(DSite(), words[kSplitPitch + begin - 1]);
    MoveTo(first);
  }

  // Those of the next block. Until it is done samples and greens stand at Even() and Words(), from the
  // block's first column on.
  HWY_INLINE void Make() {
    const Greens greens = source_.Block(kFirst, false);
    greens.Store(kFirst, words_);
    Follow(greens.green, green_);
    Follow(greens.Difference(), difference_);
  }
  HWY_INLINE void Done() { MoveTo(kSites); }

  HWY_INLINE const int16_t* Even(size_t i) const { return source_.Even(i); }
  HWY_INLINE const int16_t* Words() const { return words_; }

  // Of the sites of the block, or of those one to the west.
  HWY_INLINE VSite Green(bool west) const { return green_[!west]; }
  HWY_INLINE VSite Difference(bool west) const { return difference_[!west]; }

 private:
  // The last lane of the block before, then those of this one but its last.
  static HWY_INLINE void Follow(VSite block, VSite (&v)[2]) {
    const VSite before{_mm512_alignr_epi64(block.raw, v[1].raw, 6)};
    v[0] = hn::CombineShiftRightBytes<14>(DSite(), block, before);
    v[1] = block;
  }

  HWY_INLINE void MoveTo(ptrdiff_t i) {
    source_.MoveTo(i);
    words_ = LoadedAlone(words_ + i);
  }

  // In a block that begins with a green site, the first other one is needed with its neighbour to the east.
  static constexpr ptrdiff_t kFirst = Source::kOddColumns ? 0 : 1;

  Source source_;
  int16_t* words_;
  VSite green_[2], difference_[2];
};
#endif

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

#include "bayer/acpi_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bayer/acpi_rows.cc"
#include "hwy/foreach_target.h"

// After foreach_target.h.
#include "bayer/greens-inl.h"
#include "hwy/highway.h"
#include "simd/target_tables.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {
namespace {

void Split(const RowToSplit& row) {
  const ptrdiff_t end = row.columns.end;
  for (ptrdiff_t x = row.columns.begin; x + kSplitColumns <= end; x += kSplitColumns) SplitBlock(row, x);
  SplitEnds(row);
}

void Green(const GreenLines& lines, const BayerRow& row, int16_t* words) {
  if (row.role.green_first) {
    StoreGreens(GreenSource<true>(lines, row), row, words);
  } else {
    StoreGreens(GreenSource<false>(lines, row), row, words);
  }
}

#if HWY_TARGET == HWY_SCALAR
HWY_INLINE ptrdiff_t FirstSite(bool) { return 0; }
#else
HWY_INLINE ptrdiff_t FirstSite(bool odd) { return odd ? 1 : 0; }
#endif

// How far ahead plain stores fetch their lines: less than others, as the rows under way need the near cache.
inline constexpr size_t kPrepareNear = kPrepareBytes / 2;

inline constexpr Order kSiteOrder = CheapOrder(Order::kHalves);

// A block of bytes from sites that are clamped to 0 to 255, `first` from its first column on and `second`
// from the next, in kSiteOrder.
#if HWY_TARGET == HWY_SCALAR
HWY_INLINE V8 Alternate(VSite first, VSite) {
  return hn::TruncateTo(D8(), hn::BitCast(D16(), ClampToByte(first)));
}
#elif HWY_ARCH_X86
HWY_INLINE V8 HalvesToPixels(V8 halves) {
  alignas(16) static constexpr uint8_t kIndices[16] = {0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15};
  return hn::TableLookupBytes(halves, hn::LoadDup128(D8(), kIndices));
}
HWY_INLINE V8 Alternate(VSite first, VSite second) {
  const V8 halves = ClampToBytes(first, second);
  return kBytePermutes ? halves : HalvesToPixels(halves);
}
#else
HWY_INLINE V8 Alternate(VSite first, VSite second) {
  return hn::BitCast(D8(), hn::Or(ClampToByte(first), hn::ShiftLeft<8>(ClampToByte(second))));
}
#endif

// A block from its green sites and from the others.
HWY_INLINE V8 Block(VSite at_green, VSite at_other, bool starts_green) {
  return starts_green ? Alternate(at_green, at_other) : Alternate(at_other, at_green);
}

// For block number `block` from column x on; where blocks are of one site, x is the column itself.
HWY_INLINE BlockWords WordsAt(const int16_t* even, const int16_t* odd, size_t x, bool x_is_odd,
                              size_t block) {
  return {{(x_is_odd ? odd : even) + x / 2 + static_cast<ptrdiff_t>(block) * kSites,
           (x_is_odd ? even + 1 : odd) + x / 2 + static_cast<ptrdiff_t>(block) * kSites}};
}

// The words that a row's colours are computed from: of row y - 1 and the two below it.
struct ColourRows {
  const int16_t* even[3];
  const int16_t* greens[3];

  // By an even number. With pointers that move no index takes a register from them.
  HWY_INLINE void MoveBy(size_t columns) {
    for (size_t i = 0; i < 3; ++i) {
      even[i] = LoadedAlone(even[i] + columns / 2);
      greens[i] = LoadedAlone(greens[i] + columns / 2);
    }
  }
};

HWY_INLINE ColourRows LoadedRows(const ColourLines& lines, const GreenLines& below_lines) {
  ColourRows rows;
  for (size_t i = 0; i < 3; ++i) {
    rows.even[i] = LoadedAlone(below_lines.raw[i]);
    rows.greens[i] = LoadedAlone(lines.greens[i]);
  }
  return rows;
}

// The same for a block.
struct ColourWords {
  BlockWords raw[3], green[3];

  HWY_INLINE ColourWords(const ColourRows& rows, size_t x, bool odd, size_t block)
      : raw{Raw(rows.even[0], x, odd, block), Raw(rows.even[1], x, odd, block),
            Raw(rows.even[2], x, odd, block)},
        green{Sites(rows.greens[0], x, odd, block), Sites(rows.greens[1], x, odd, block),
              Sites(rows.greens[2], x, odd, block)} {}

 private:
  static HWY_INLINE BlockWords Raw(const int16_t* even, size_t x, bool odd, size_t block) {
    return WordsAt(even, even + kSplitPitch, x, odd, block);
  }
  static HWY_INLINE BlockWords Sites(const int16_t* words, size_t x, bool odd, size_t block) {
    return WordsAt(words, words, x, odd, block);
  }
};

// What colours are interpolated from, where there are two of them around a site: twice a sample less its
// green.
HWY_INLINE VSite Difference(VSite sample, VSite green) { return hn::Sub(hn::Add(sample, sample), green); }

// What a block's colours are interpolated from, beside its own samples and greens.
struct Surroundings {
  Neighbours above, under;  // of sites that are not green, in the rows above and below: samples
  Neighbours green_above, green_under;
  Neighbours difference;  // of green sites, in their own row
  VSite north, south;     // of green sites: samples
  VSite green_north, green_south;
};

// Loaded from words; `c` is the block's first column that is not green, `g` the first that is. The greens of
// the row below may come from elsewhere.
HWY_INLINE Surroundings LoadSurroundings(const ColourWords& at, ptrdiff_t c, ptrdiff_t g,
                                         Neighbours green_under, VSite green_south) {
  const Neighbours samples = at.raw[1].Beside(g), greens = at.green[1].Beside(g);
  return {at.raw[0].Beside(c),
          at.raw[2].Beside(c),
          at.green[0].Beside(c),
          green_under,
          {Difference(samples.west, greens.west), Difference(samples.east, greens.east)},
          at.raw[0].At(g),
          at.raw[2].At(g),
          at.green[0].At(g),
          green_south};
}
HWY_INLINE Surroundings LoadSurroundings(const ColourWords& at, ptrdiff_t c, ptrdiff_t g) {
  return LoadSurroundings(at, c, g, at.green[2].Beside(c), at.green[2].At(g));
}

HWY_INLINE void ColourBlock(const ColourWords& at, const Surroundings& around, auto starts_green,
                            V8& row_colour, V8& green, V8& other_colour) {
  const ptrdiff_t g = FirstSite(!starts_green);  // the first green site
  const ptrdiff_t c = FirstSite(starts_green);   // the first other one

  // At green sites a colour is the mean of its two neighbours' as a difference to green.
  const VSite own_green = at.raw[1].At(g);
  const auto at_green = [&](VSite differences) PRISMO_INLINE {
    return hn::ShiftRight<2>(hn::Add(differences, hn::Add(own_green, own_green)));
  };
  const VSite horizontal = at_green(hn::Add(around.difference.west, around.difference.east));
  const VSite vertical = at_green(
      Difference(hn::Add(around.north, around.south), hn::Add(around.green_north, around.green_south)));

  const auto [nw, ne] = around.above;
  const auto [sw, se] = around.under;
  const VSite site_green = at.green[1].At(c);
  const VSite twice = hn::Add(site_green, site_green);
  const auto direction = [&](VSite north, VSite south, VSite north_green, VSite south_green) PRISMO_INLINE {
    const VSite laplacian = hn::Sub(twice, hn::Add(north_green, south_green));
    const VSite samples = hn::Add(north, south);
    return Direction(north, south, laplacian, hn::Add(hn::Add(samples, samples), laplacian));
  };
  const VSite opposite = Smoother(direction(ne, sw, around.green_above.east, around.green_under.west),
                                  direction(nw, se, around.green_above.west, around.green_under.east));

  row_colour = Block(horizontal, at.raw[1].At(c), starts_green);
  green = Block(own_green, site_green, starts_green);
  other_colour = Block(vertical, opposite, starts_green);
}

// The colours that are not green as averages over the neighbours.
HWY_INLINE void BilinearBlock(const ColourWords& at, auto starts_green, V8& row_colour, V8& other_colour) {
  const ptrdiff_t g = FirstSite(!starts_green), c = FirstSite(starts_green);
  const auto [west, east] = at.raw[1].Beside(g);
  const auto [nw, ne] = at.raw[0].Beside(c);
  const auto [sw, se] = at.raw[2].Beside(c);
  row_colour = Block(Mean(west, east), at.raw[1].At(c), starts_green);
  other_colour = Block(Mean(at.raw[0].At(g), at.raw[2].At(g)), Mean(nw, ne, sw, se), starts_green);
}

// Blocks at the sides of a row, and those of rows that are bilinear throughout.
struct BorderBlocks {
  const ColourLines& lines;
  const GreenLines& below_lines;

  HWY_INLINE void operator()(size_t x, bool starts_green, V8& row_colour, V8& green, V8& other_colour) const {
    if (starts_green) {
      Make(x, std::true_type(), row_colour, green, other_colour);
    } else {
      Make(x, std::false_type(), row_colour, green, other_colour);
    }
  }

 private:
  HWY_INLINE void Make(size_t x, auto starts_green, V8& row_colour, V8& green, V8& other_colour) const {
    const ColourWords at(LoadedRows(lines, below_lines), x, x % 2 != 0, 0);
    ColourBlock(at, LoadSurroundings(at, FirstSite(starts_green), FirstSite(!starts_green)), starts_green,
                row_colour, green, other_colour);
    V8 bilinear_row_colour, bilinear_other_colour;
    BilinearBlock(at, starts_green, bilinear_row_colour, bilinear_other_colour);
    const auto bilinear = OutsideColumns<kSiteOrder>(D8(), x, lines.adaptive);
    row_colour = hn::IfThenElse(bilinear, bilinear_row_colour, row_colour);
    other_colour = hn::IfThenElse(bilinear, bilinear_other_colour, other_colour);
  }
};

#if PRISMO_MANY_REGISTERS
// What LoadSurroundings gives for blocks that follow each other; the greens of the row below may be made
// instead.
template <bool kStartsGreen>
class CarriedSurroundings {
 public:
  HWY_INLINE explicit CarriedSurroundings(const ColourWords& first)
      : above_(first.raw[0]),
        under_(first.raw[2]),
        green_above_(first.green[0]),
        difference_(kStartsGreen ? hn::Set(DSite(), OutermostDifference(first)) : DifferenceAt(first, 0)) {}

  HWY_INLINE Surroundings Next(const ColourWords& at, Neighbours green_under) {
    Surroundings next{above_.Next(at.raw[0]), under_.Next(at.raw[2]), green_above_.Next(at.green[0]),
                      green_under, difference_.Next(DifferenceAt(at, kStartsGreen ? 1 : 2 * kSites))};
    constexpr auto kBetween = kStartsGreen ? &Neighbours::west : &Neighbours::east;
    next.north = next.above.*kBetween;
    next.south = next.under.*kBetween;
    next.green_north = next.green_above.*kBetween;
    next.green_south = next.green_under.*kBetween;
    return next;
  }

 private:
  static HWY_INLINE VSite DifferenceAt(const ColourWords& at, ptrdiff_t column) {
    return Difference(at.raw[1].At(column), at.green[1].At(column));
  }
  static HWY_INLINE int16_t OutermostDifference(const ColourWords& first) {
    return static_cast<int16_t>(2 * first.raw[1].from[1][-1] - first.green[1].from[1][-1]);
  }

  CarriedWords<kStartsGreen> above_, under_, green_above_;
  CarriedNeighbours<!kStartsGreen> difference_;
};

// Inner blocks from an even column on, whose surroundings come out of registers.
template <bool kStartsGreen, class Sink>
class CarriedBlocks {
 public:
  // The rows from column x on, which is the first block's first.
  HWY_INLINE CarriedBlocks(const ColourRows& rows, const Sink& sink, size_t x)
      : rows_(rows), around_(Words()), sink_(sink), x_(x) {}

  HWY_INLINE void operator()(size_t block, V8& row_colour, V8& green, V8& other_colour) {
    sink_.PrepareBlock(x_ + block * kLanes, kPrepareNear);
    const ColourWords at = Words();
    const Surroundings around = around_.Next(at, green_under_.Next(at.green[2]));
    ColourBlock(at, around, std::bool_constant<kStartsGreen>(), row_colour, green, other_colour);
    rows_.MoveBy(2 * kSites);
  }

 private:
  HWY_INLINE ColourWords Words() const { return ColourWords(rows_, 0, false, 0); }

  ColourRows rows_;  // from the next block's first column on
  CarriedSurroundings<kStartsGreen> around_;
  CarriedWords<kStartsGreen> green_under_{Words().green[2]};
  Sink sink_;
  size_t x_;
};

// Inner blocks from an even column on, with the greens of the row below them.
template <bool kStartsGreen, bool kCarried>
class BlocksInStep {
 public:
  HWY_INLINE BlocksInStep(const GreensInStep<GreenSource<!kStartsGreen>>& below, int16_t* above,
                          int16_t* here)
      : below_(below), greens_{above, here}, around_(Words()) {}

  HWY_INLINE void operator()(size_t, V8& row_colour, V8& green, V8& other_colour) {
    const ColourWords at = Words();
    Surroundings around;
    if constexpr (kCarried) {
      around = around_.Next(at, below_.Beside());
    } else {
      constexpr ptrdiff_t c = kStartsGreen ? 1 : 0, g = 1 - c;
      const Neighbours below = below_.Beside();
      around = LoadSurroundings(at, c, g, below, kStartsGreen ? below.west : below.east);
    }
    ColourBlock(at, around, std::bool_constant<kStartsGreen>(), row_colour, green, other_colour);
    below_.Next();
    for (int16_t*& words : greens_) words = LoadedAlone(words + kSites);
  }

 private:
  // Until the block is done.
  HWY_INLINE ColourWords Words() const {
    const ColourRows rows{{below_.Even(0), below_.Even(1), below_.Even(2)},
                          {greens_[0], greens_[1], below_.Words()}};
    return ColourWords(rows, 0, false, 0);
  }

  GreensInStep<GreenSource<!kStartsGreen>> below_;
  int16_t* greens_[2];  // of the row above and the row itself, from the next block's first column on
  CarriedSurroundings<kStartsGreen> around_;
};

// Greens of the row below and pixels in one pass: streaming stores, which the memory takes slowly, then have
// the time of both. With plain stores all rows under way and the pixels would overflow the first-level cache.
template <bool kCarried, size_t kBytes>
void ColourInStep(const ColourLines& lines, const GreenLines& below_lines, const BayerRow& below,
                  const BayerRow& row, const PackedSink<kBytes, kSiteOrder>& sink) {
  // The sites of the last inner block's greens are inner ones, too.
  const ColumnRange inner{lines.adaptive.begin, lines.adaptive.end - 2};
  CoverColumns<StoreKind::kStreaming, false, kSiteOrder>(
      row, inner, sink,
      [&](size_t x, size_t blocks, auto starts_green) PRISMO_INLINE {
        constexpr bool kStartsGreen = decltype(starts_green)::value;
        const auto first = static_cast<ptrdiff_t>(x / 2);
        return BlocksInStep<kStartsGreen, kCarried>(
            {below_lines, below, LoadedAlone(lines.greens[2]), first, blocks},
            LoadedAlone(lines.greens[0]) + first, LoadedAlone(lines.greens[1]) + first);
      },
      BorderBlocks{lines, below_lines});
}
#endif

template <size_t kBytes, StoreKind kStores>
void Colour(const ColourLines& lines, const GreenLines& below_lines, const BayerRow& below,
            const BayerRow& row, const RowTarget& target) {
  const PackedSink<kBytes, kSiteOrder> sink{target.plane[0], target.first_column};
  if constexpr (kStores == StoreKind::kStreaming) {
    const size_t to_line = sink.PixelsToLine(row.columns.begin);
    if (to_line == kCacheLine) {
      return Colour<kBytes, StoreKind::kCached>(lines, below_lines, below, row, target);
    }
#if PRISMO_MANY_REGISTERS
    const bool even = std::min<size_t>(row.columns.begin + to_line, row.columns.end) % 2 == 0;
    if (even && !below_lines.bilinear && lines.adaptive.begin < lines.adaptive.end) {
      return simd::CrossingLoadsAreSlow() ? ColourInStep<true>(lines, below_lines, below, row, sink)
                                          : ColourInStep<false>(lines, below_lines, below, row, sink);
    }
#endif
  }
  Green(below_lines, below, lines.greens[2]);
#if PRISMO_MANY_REGISTERS
  if (kStores == StoreKind::kCached && row.columns.begin % 2 == 0 && simd::CrossingLoadsAreSlow()) {
    return CoverColumns<kStores, false, kSiteOrder>(
        row, lines.adaptive, sink,
        [&](size_t first, size_t, auto starts_green) PRISMO_INLINE {
          ColourRows from_first = LoadedRows(lines, below_lines);
          from_first.MoveBy(first);
          return CarriedBlocks<decltype(starts_green)::value, PackedSink<kBytes, kSiteOrder>>(from_first,
                                                                                              sink, first);
        },
        BorderBlocks{lines, below_lines});
  }
#endif
  CoverColumns<kStores, false, kSiteOrder>(
      row, lines.adaptive, sink,
      [&](size_t first, size_t, auto starts_green) PRISMO_INLINE {
        const ColourRows rows = LoadedRows(lines, below_lines);
        return [=, green_first = row.role.green_first](size_t block, V8& row_colour, V8& green,
                                                       V8& other_colour) PRISMO_INLINE {
          const size_t x = first + block * kLanes;
          if constexpr (kStores == StoreKind::kCached && kLanes > 1) sink.PrepareBlock(x, kPrepareNear);
          const bool odd = starts_green != green_first;
          const ColourWords at =
              kLanes == 1 ? ColourWords(rows, x, odd, 0) : ColourWords(rows, first, odd, block);
          ColourBlock(at, LoadSurroundings(at, FirstSite(starts_green), FirstSite(!starts_green)),
                      starts_green, row_colour, green, other_colour);
        };
      },
      BorderBlocks{lines, below_lines});
}

constexpr AcpiKernels kKernels = {.split = &Split,
                                  .green = &Green,
                                  .bgra = {&Colour<4, StoreKind::kCached>, &Colour<4, StoreKind::kStreaming>},
                                  .bgr = {&Colour<3, StoreKind::kCached>, &Colour<3, StoreKind::kStreaming>}};

}  // namespace

const AcpiKernels& AcpiTable() { return kKernels; }

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prismo {

const AcpiKernels& CurrentAcpiKernels() {
  static constexpr simd::TargetTables<AcpiKernels> kTables{PRISMO_TARGET_TABLES(AcpiTable)};
  return kTables.Current();
}

}  // namespace prismo
#endif

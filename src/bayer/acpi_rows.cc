#include "bayer/acpi_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bayer/acpi_rows.cc"
#include "hwy/foreach_target.h"

// After foreach_target.h.
#include "bayer/row_cover-inl.h"
#include "hwy/highway.h"
#include "simd/target_tables.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {
namespace {

// Green and other sites alternate, so one vector of 16-bit lanes holds all sites of one kind of a block:
// those of its even bytes or those of its odd ones. With one lane there is nothing to tell apart: each block
// is one site.
using DSite = hn::RebindToSigned<D16>;
using VSite = hn::Vec<DSite>;
inline constexpr size_t kSites = hn::MaxLanes(DSite());

#if HWY_TARGET == HWY_SCALAR
HWY_INLINE size_t FirstSite(bool) { return 0; }
#else
HWY_INLINE size_t FirstSite(bool odd) { return odd ? 1 : 0; }
#endif

HWY_INLINE VSite ClampToByte(VSite v) {
  return hn::Min(hn::Max(v, hn::Zero(DSite())), hn::Set(DSite(), 255));
}

// A block of bytes from sites that are clamped to 0 to 255, `first` from its first column on and `second`
// from the next, in kPackedOrder.
#if HWY_TARGET == HWY_SCALAR
HWY_INLINE V8 Alternate(VSite first, VSite) {
  return hn::TruncateTo(D8(), hn::BitCast(D16(), ClampToByte(first)));
}
#elif HWY_ARCH_X86
HWY_INLINE V8 Pack(VSite first, VSite second) {  // clamps, too
#if HWY_TARGET <= HWY_AVX3
  return V8{_mm512_packus_epi16(first.raw, second.raw)};
#elif HWY_TARGET == HWY_AVX2
  return V8{_mm256_packus_epi16(first.raw, second.raw)};
#else
  return V8{_mm_packus_epi16(first.raw, second.raw)};
#endif
}
HWY_INLINE V8 HalvesToPixels(V8 halves) {
  alignas(16) static constexpr uint8_t kIndices[16] = {0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15};
  return hn::TableLookupBytes(halves, hn::LoadDup128(D8(), kIndices));
}
HWY_INLINE V8 Alternate(VSite first, VSite second) {
  const V8 halves = Pack(first, second);
  return kPackedOrder == Order::kHalves ? halves : HalvesToPixels(halves);
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

// Words of a row, from a block's first column on.
struct BlockWords {
  const int16_t* from[2];  // columns 0, 2, 4 ... of the block, and 1, 3, 5 ...

  // Every second column from `column` of the block on.
  HWY_INLINE VSite At(ptrdiff_t column) const { return hn::LoadU(DSite(), from[column & 1] + (column >> 1)); }
};

// For block number `block` from column x on; where blocks are of one site, x is the column itself.
HWY_INLINE BlockWords WordsAt(const int16_t* even, const int16_t* odd, size_t x, bool x_is_odd,
                              size_t block) {
  return {{(x_is_odd ? odd : even) + x / 2 + block * kSites,
           (x_is_odd ? even + 1 : odd) + x / 2 + block * kSites}};
}

// As OutsideColumns, for sites: every second column from `first` on.
HWY_INLINE hn::Mask<DSite> OutsideSites(size_t first, ColumnRange inner) {
  const auto sites_before = [first](size_t column) {
    return static_cast<uint32_t>(column > first ? (column - first + 1) / 2 : 0);
  };
  return OutsideColumns(DSite(), 0, {sites_before(inner.begin), sites_before(inner.end)});
}

// The site that is the given column, if there is one.
HWY_INLINE hn::Mask<DSite> SiteAt(size_t first, size_t column) {
  const bool among = column >= first && column < first + 2 * kSites && (column - first) % 2 == 0;
  const auto lane = static_cast<int16_t>(among ? static_cast<int>(column - first) / 2 : -1);
  return hn::Eq(hn::Iota(DSite(), 0), hn::Set(DSite(), lane));
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
  const VSite twice = hn::Add(hn::IfThenElse(hn::Gt(a.gradient, b.gradient), b.estimate, a.estimate),
                              hn::IfThenElse(hn::Gt(b.gradient, a.gradient), a.estimate, b.estimate));
  return hn::ShiftRight<3>(twice);
}

constexpr size_t kSplitColumns = 2 * kSites;

HWY_INLINE void SplitBlock(const RowToSplit& row, size_t x) {
  int16_t* const even = row.words + x / 2;
  int16_t* const odd = even + kSplitPitch;
#if HWY_TARGET == HWY_SCALAR
  *even = row.line[x];
  *odd = row.line[x + 1];
#else
  const DSite d;
  hwy::Prefetch(row.line + x + row.next_row);
  const auto both = hn::BitCast(D16(), hn::LoadU(D8(), row.line + x));
  hn::StoreU(hn::BitCast(d, hn::And(both, hn::Set(D16(), 255))), d, even);
  hn::StoreU(hn::BitCast(d, hn::ShiftRight<8>(both)), d, odd);
#endif
}

// What remains of the columns behind whole blocks.
void SplitRest(const RowToSplit& row) {
  const auto [begin, end] = row.columns;
  size_t x = end - (end - begin) % kSplitColumns;
  if (x == end) return;
  if (end - begin >= kSplitColumns) return SplitBlock(row, end - kSplitColumns);  // overlaps the one before
  for (; x < end; x += 2) {
    row.words[x / 2] = row.line[x];
    row.words[kSplitPitch + x / 2] = row.line[x + 1];
  }
}

void Split(const RowToSplit& row) {
  for (size_t x = row.columns.begin; x + kSplitColumns <= row.columns.end; x += kSplitColumns)
    SplitBlock(row, x);
  SplitRest(row);
}

HWY_INLINE RowToSplit RowLoadedAlone(const RowToSplit& from) {
  return {LoadedAlone(from.line),
          {LoadedAlone(from.columns.begin), LoadedAlone(from.columns.end)},
          from.next_row,
          LoadedAlone(from.words)};
}

// The greens of sites i to i + kSites - 1.
HWY_INLINE void StoreGreens(VSite green, VSite twice_own, size_t i, int16_t* words) {
  hn::StoreU(green, DSite(), words + i);
  hn::StoreU(hn::Sub(twice_own, green), DSite(), words + kSplitPitch + i);
}
HWY_INLINE void StoreGreens(VSite green, VSite, size_t i, uint8_t* bytes) {
  const hn::Rebind<uint8_t, DSite> d;
  hn::StoreU(hn::DemoteTo(d, green), d, bytes + i);
}

template <typename T>
void Green(const GreenLines& lines, const BayerRow& row, T* to) {
  const DSite d;
  const bool odd = row.role.green_first;  // the sites' columns
  const auto words_of = [](const SplitRow& split, bool of_odd) {
    const int16_t* const even = LoadedAlone(split.even);
    return of_odd ? even + kSplitPitch : even;
  };
  const int16_t* const norther = words_of(lines.raw[0], odd);
  const int16_t* const north_of = words_of(lines.raw[1], odd);
  const int16_t* const sites = words_of(lines.raw[2], odd);
  const int16_t* const south_of = words_of(lines.raw[3], odd);
  const int16_t* const souther = words_of(lines.raw[4], odd);
  const int16_t* const east_of = words_of(lines.raw[2], !odd) + odd;
  const uint32_t last = row.width / 2 - 1;
  const bool bilinear = lines.bilinear;
  // Splitting goes along: beside the stores of pixels that are under way, its own would fill the queue.
  const RowToSplit ahead = lines.ahead ? RowLoadedAlone(*lines.ahead) : RowToSplit{};
  if (lines.ahead) SplitRest(ahead);
  // Sites i to i + kSites - 1.
  const auto block = [=](size_t i, auto any_bilinear) PRISMO_INLINE {
    if (2 * i + kSplitColumns <= ahead.columns.end) SplitBlock(ahead, 2 * i);
    const auto load = [&](const int16_t* from) PRISMO_INLINE { return LoadedOnce(hn::LoadU(d, from + i)); };
    const VSite own = hn::LoadU(d, sites + i);
    const VSite twice = hn::Add(own, own);
    const VSite north = load(north_of), south = load(south_of);
    const VSite west = load(east_of - 1), east = load(east_of);
    const VSite down = hn::Add(north, south), across = hn::Add(west, east);
    const VSite vertical = hn::Sub(twice, hn::Add(hn::LoadU(d, norther + i), hn::LoadU(d, souther + i)));
    const VSite horizontal =
        hn::Sub(twice, hn::Add(hn::LoadU(d, sites + i - 1), hn::LoadU(d, sites + i + 1)));
    VSite g = ClampToByte(Smoother({north, south, vertical, hn::Add(hn::Add(down, down), vertical)},
                                   {west, east, horizontal, hn::Add(hn::Add(across, across), horizontal)}));
    if constexpr (any_bilinear) {
      // The frame's second columns from the sides, and the outermost ones, along the side.
      const auto cross = OutsideColumns(d, i, bilinear ? ColumnRange{0, 0} : ColumnRange{1, last});
      const auto side = OutsideColumns(d, i, odd ? ColumnRange{0, last} : ColumnRange{1, last + 1});
      g = hn::IfThenElse(cross, Mean(north, south, west, east), g);
      g = hn::IfThenElse(side, Mean(north, south), g);
    }
    StoreGreens(g, twice, i, to);
  };
  size_t i = row.columns.begin / 2;
  const size_t end = (row.columns.end + 1) / 2;
  const size_t inner_begin = bilinear ? end : 1;
  for (; i < end && i < inner_begin; i += kSites) block(i, std::true_type());
  for (; i < end && i + kSites <= last; i += kSites) block(i, std::false_type());
  for (; i < end; i += kSites) block(i, std::true_type());
}

void Restore(const RowToSplit& split, const uint8_t* greens, size_t next_greens, const BayerRow& row,
             int16_t* words) {
  const DSite d;
  const hn::Rebind<uint8_t, DSite> d_bytes;
  const int16_t* const sites = split.words + (row.role.green_first ? kSplitPitch : 0);
  SplitRest(split);
  for (size_t i = row.columns.begin / 2; i < (row.columns.end + 1) / 2; i += kSites) {
    if (2 * i + kSplitColumns <= split.columns.end) SplitBlock(split, 2 * i);
    hwy::Prefetch(greens + i + next_greens);
    const VSite own = hn::LoadU(d, sites + i);
    StoreGreens(hn::PromoteTo(d, hn::LoadU(d_bytes, greens + i)), hn::Add(own, own), i, words);
  }
}

// What the colours of a block are computed from, of the row above, its own and the one below.
struct ColourWords {
  BlockWords raw[3], green[3], difference[3];

  HWY_INLINE ColourWords(const ColourLines& lines, size_t x, bool odd, size_t block)
      : raw{Raw(lines.raw[0], x, odd, block), Raw(lines.raw[1], x, odd, block),
            Raw(lines.raw[2], x, odd, block)},
        green{Sites(lines.greens[0].green, x, odd, block), Sites(lines.greens[1].green, x, odd, block),
              Sites(lines.greens[2].green, x, odd, block)},
        difference{Sites(lines.greens[0].difference(), x, odd, block),
                   Sites(lines.greens[1].difference(), x, odd, block),
                   Sites(lines.greens[2].difference(), x, odd, block)} {}

 private:
  static HWY_INLINE BlockWords Raw(const SplitRow& row, size_t x, bool odd, size_t block) {
    return WordsAt(row.even, row.odd(), x, odd, block);
  }
  static HWY_INLINE BlockWords Sites(const int16_t* words, size_t x, bool odd, size_t block) {
    return WordsAt(words, words, x, odd, block);
  }
};

template <bool kBorder>
HWY_INLINE void ColourBlock(const ColourWords& at, size_t x, uint32_t width, ColumnRange adaptive,
                            auto starts_green, V8& row_colour, V8& green, V8& other_colour) {
  const auto g = static_cast<ptrdiff_t>(FirstSite(!starts_green));  // the first green site
  const auto c = static_cast<ptrdiff_t>(FirstSite(starts_green));   // the first other one

  // At green sites a colour is the mean of its two neighbours' as a difference to green.
  const VSite own_green = at.raw[1].At(g);
  const auto at_green = [&](VSite a, VSite b) PRISMO_INLINE {
    return hn::ShiftRight<2>(hn::Add(hn::Add(a, b), hn::Add(own_green, own_green)));
  };
  VSite horizontal = at_green(at.difference[1].At(g - 1), at.difference[1].At(g + 1));
  VSite vertical = at_green(at.difference[0].At(g), at.difference[2].At(g));

  const VSite nw = at.raw[0].At(c - 1), ne = at.raw[0].At(c + 1);
  const VSite sw = at.raw[2].At(c - 1), se = at.raw[2].At(c + 1);
  const VSite site_green = at.green[1].At(c);
  const VSite twice = hn::Add(site_green, site_green);
  const auto direction = [&](VSite north, VSite south, ptrdiff_t of_north, ptrdiff_t of_south) PRISMO_INLINE {
    const VSite greens = hn::Add(at.green[0].At(of_north), at.green[2].At(of_south));
    const VSite differences = hn::Add(at.difference[0].At(of_north), at.difference[2].At(of_south));
    return Direction(north, south, hn::Sub(twice, greens), hn::Add(twice, differences));
  };
  VSite opposite = Smoother(direction(ne, sw, c + 1, c - 1), direction(nw, se, c - 1, c + 1));

  if constexpr (kBorder) {
    // Bilinear: averages over the neighbours inside the frame.
    const auto bilinear = [&](size_t first, VSite inside, VSite west, VSite east) PRISMO_INLINE {
      return hn::IfThenElse(SiteAt(first, 0), east, hn::IfThenElse(SiteAt(first, width - 1), west, inside));
    };
    const auto others = OutsideSites(x + static_cast<size_t>(c), adaptive);
    const auto greens = OutsideSites(x + static_cast<size_t>(g), adaptive);
    const VSite west = at.raw[1].At(g - 1), east = at.raw[1].At(g + 1);
    horizontal = hn::IfThenElse(greens, bilinear(x + static_cast<size_t>(g), Mean(west, east), west, east),
                                horizontal);
    vertical = hn::IfThenElse(greens, Mean(at.raw[0].At(g), at.raw[2].At(g)), vertical);
    opposite = hn::IfThenElse(
        others, bilinear(x + static_cast<size_t>(c), Mean(nw, ne, sw, se), Mean(nw, sw), Mean(ne, se)),
        opposite);
  }
  row_colour = Block(horizontal, at.raw[1].At(c), starts_green);
  green = Block(own_green, site_green, starts_green);
  other_colour = Block(vertical, opposite, starts_green);
}

HWY_INLINE ColourLines LinesLoadedAlone(const ColourLines& from) {
  return {{{LoadedAlone(from.raw[0].even)}, {LoadedAlone(from.raw[1].even)}, {LoadedAlone(from.raw[2].even)}},
          {{LoadedAlone(from.greens[0].green)},
           {LoadedAlone(from.greens[1].green)},
           {LoadedAlone(from.greens[2].green)}},
          {}};
}

template <size_t kBytes, StoreKind kStores>
void Colour(const ColourLines& info, const BayerRow& row, const RowTarget& target) {
  const PackedSink<kBytes, kPackedOrder> sink{target.plane[0], target.first_column};
  if (kStores == StoreKind::kStreaming && sink.PixelsToLine(row.columns.begin) == kCacheLine) {
    return Colour<kBytes, StoreKind::kCached>(info, row, target);
  }
  const bool green_first = row.role.green_first;
  CoverColumns<kStores>(
      row, info.adaptive, sink,
      [=, lines = LinesLoadedAlone(info)](size_t first, size_t block, auto starts_green, V8& row_colour,
                                          V8& green, V8& other_colour) PRISMO_INLINE {
        const size_t x = first + block * kLanes;
        if constexpr (kStores == StoreKind::kCached && kLanes > 1) PrepareStores(sink, x);
        const bool odd = starts_green != green_first;
        const ColourWords words =
            kLanes == 1 ? ColourWords(lines, x, odd, 0) : ColourWords(lines, first, odd, block);
        ColourBlock<false>(words, 0, 0, {}, starts_green, row_colour, green, other_colour);
      },
      [&](size_t x, bool starts_green, V8& row_colour, V8& green, V8& other_colour) HWY_ATTR {
        const ColourWords words(info, x, x % 2 != 0, 0);
        ColourBlock<true>(words, x, row.width, info.adaptive, starts_green, row_colour, green, other_colour);
      });
}

constexpr AcpiKernels kKernels = {.split = &Split,
                                  .green = &Green<int16_t>,
                                  .green_bytes = &Green<uint8_t>,
                                  .restore = &Restore,
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

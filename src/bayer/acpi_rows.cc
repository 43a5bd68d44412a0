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
// those in the even bytes from `from` on. With one lane there is nothing to tell apart: each block is one
// site.
using DSite = hn::RebindToSigned<D16>;
using VSite = hn::Vec<DSite>;

#if HWY_TARGET == HWY_SCALAR
HWY_INLINE size_t FirstSite(bool) { return 0; }
HWY_INLINE VSite Sites(const uint8_t* line, ptrdiff_t first) {
  return hn::BitCast(DSite(), hn::PromoteTo(D16(), hn::LoadU(D8(), line + first)));
}
HWY_INLINE V8 SiteBytes(VSite v, size_t) { return hn::TruncateTo(D8(), hn::BitCast(D16(), v)); }
#else
HWY_INLINE size_t FirstSite(bool odd) { return odd ? 1 : 0; }
// Even and odd sites come from the same load, which is one across cache lines only where it must be.
HWY_INLINE VSite Sites(const uint8_t* line, ptrdiff_t first) {
  const auto two = hn::BitCast(D16(), hn::LoadU(D8(), line + (first & ~ptrdiff_t{1})));
  return hn::BitCast(DSite(), first & 1 ? hn::ShiftRight<8>(two) : hn::And(two, hn::Set(D16(), 0xFF)));
}
// Values of 0 to 255 as the even or the odd bytes of a block, zeros between them.
HWY_INLINE V8 SiteBytes(VSite v, size_t first) {
  return hn::BitCast(D8(), first == 0 ? v : hn::ShiftLeft<8>(v));
}
#endif

HWY_INLINE VSite ClampToByte(VSite v) {
  return hn::Min(hn::Max(v, hn::Zero(DSite())), hn::Set(DSite(), 255));
}

// Blocks of sites clamped to bytes: `sites` at the odd columns or the even ones, `others` at the rest.
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
// Packing clamps, a byte permute then spreads the sites.
HWY_INLINE __m512i SpreadEven() { return _mm512_set4_epi32(0x0F070E06, 0x0D050C04, 0x0B030A02, 0x09010800); }
HWY_INLINE V8 WithSites(V8 others, VSite sites, bool odd) {
  const __m512i packed = _mm512_packus_epi16(sites.raw, sites.raw);
  const __mmask64 where = odd ? 0xAAAAAAAAAAAAAAAA : 0x5555555555555555;
  return V8{_mm512_mask_shuffle_epi8(others.raw, where, packed, SpreadEven())};
}
HWY_INLINE V8 TwoSites(VSite sites, VSite others, bool odd) {
  const __m512i packed =
      odd ? _mm512_packus_epi16(others.raw, sites.raw) : _mm512_packus_epi16(sites.raw, others.raw);
  return V8{_mm512_shuffle_epi8(packed, SpreadEven())};
}
#else
HWY_INLINE V8 WithSites(V8 others, VSite sites, bool odd) {
  return hn::IfThenElse(GreenSites(D8(), !odd), SiteBytes(ClampToByte(sites), FirstSite(odd)), others);
}
HWY_INLINE V8 TwoSites(VSite sites, VSite others, bool odd) {
  return WithSites(SiteBytes(ClampToByte(others), FirstSite(!odd)), sites, odd);
}
#endif

// 2 a - b - c
HWY_INLINE VSite Laplacian(VSite a, VSite b, VSite c) { return hn::Sub(hn::Sub(hn::Add(a, a), b), c); }

// Interpolates along the direction (a1, a2) or (b1, b2) that has the smaller gradient, with the direction's
// Laplacian as a correction; the mean of both estimates on a tie. All intermediate values fit 16 bits.
HWY_INLINE VSite Adaptive(VSite a1, VSite a2, VSite a_laplacian, VSite b1, VSite b2, VSite b_laplacian) {
  const VSite a_gradient = hn::Add(hn::Abs(hn::Sub(a1, a2)), hn::Abs(a_laplacian));
  const VSite b_gradient = hn::Add(hn::Abs(hn::Sub(b1, b2)), hn::Abs(b_laplacian));
  const VSite a_sum = hn::Add(a1, a2);
  const VSite b_sum = hn::Add(b1, b2);
  const VSite a = hn::Add(hn::Add(a_sum, a_sum), a_laplacian);
  const VSite b = hn::Add(hn::Add(b_sum, b_sum), b_laplacian);
  // Twice the better one, or the sum of both.
  const VSite twice = hn::Add(hn::IfThenElse(hn::Gt(a_gradient, b_gradient), b, a),
                              hn::IfThenElse(hn::Gt(b_gradient, a_gradient), a, b));
  return hn::ShiftRight<3>(twice);
}

// The colour of neighbours a and b at a green site, as their mean difference to green.
HWY_INLINE VSite AtGreen(VSite green, VSite a, VSite b, VSite a_green, VSite b_green) {
  const VSite sum = hn::Add(hn::Add(a, b), green);
  return hn::ShiftRight<2>(hn::Sub(hn::Sub(hn::Add(sum, sum), a_green), b_green));
}

template <bool kBorder>
HWY_INLINE V8 GreenBlock(const uint8_t* const (&lines)[5], size_t x, uint32_t width, auto starts_green) {
  const size_t first = FirstSite(starts_green);
  const auto site = [&](size_t line, ptrdiff_t dx)
                        PRISMO_INLINE { return Sites(lines[line], static_cast<ptrdiff_t>(first) + dx); };
  const VSite own = site(2, 0);
  const VSite north = site(1, 0), south = site(3, 0);
  const VSite west = site(2, -1), east = site(2, 1);
  const VSite vertical = Laplacian(own, site(0, 0), site(4, 0));
  const VSite horizontal = Laplacian(own, site(2, -2), site(2, 2));
  V8 green = WithSites(hn::LoadU(D8(), lines[2]), Adaptive(north, south, vertical, west, east, horizontal),
                       starts_green);
  if constexpr (kBorder) {
    const VSite along = hn::Add(north, south);
    const VSite cross = hn::ShiftRight<2>(hn::Add(along, hn::Add(west, east)));
    const V8 second = SiteBytes(cross, first);
    const V8 outermost = SiteBytes(hn::ShiftRight<1>(along), first);
    green = hn::IfThenElse(OutsideColumns(D8(), x, {2, width - 2}), second, green);
    green = hn::IfThenElse(OutsideColumns(D8(), x, {1, width - 1}), outermost, green);
    green = hn::IfThenElse(GreenSites(D8(), starts_green), hn::LoadU(D8(), lines[2]), green);
  }
  return green;
}

void Green(const GreenLines& info, const BayerRow& row, uint8_t* greens) {
  const uint8_t* const lines[5] = {LoadedAlone(info.raw[0]), LoadedAlone(info.raw[1]),
                                   LoadedAlone(info.raw[2]), LoadedAlone(info.raw[3]),
                                   LoadedAlone(info.raw[4])};
  const GreenSink sink{greens, 0};
  CoverRow<StoreKind::kCached, 4>(
      lines, row, ColumnRange{2, row.width - 2}, sink,
      [](const uint8_t* const(&at)[5], auto starts_green, V8&, V8& green, V8&)
          PRISMO_INLINE { green = GreenBlock<false>(at, 0, 0, starts_green); },
      [&](const uint8_t* const(&at)[5], size_t x, auto starts_green, V8&, V8& green, V8&)
          PRISMO_INLINE { green = GreenBlock<true>(at, x, row.width, starts_green); });
}

// `lines`: raw rows above, of and below the block, then the greens of the same rows.
template <bool kBorder>
HWY_INLINE void ColourBlock(const uint8_t* const (&lines)[6], size_t x, uint32_t width, ColumnRange adaptive,
                            auto starts_green, V8& row_colour, V8& green, V8& other_colour) {
  const size_t at_green = FirstSite(!starts_green);
  const size_t at_other = FirstSite(starts_green);
  const auto site = [&](size_t line, size_t first, ptrdiff_t dx)
                        PRISMO_INLINE { return Sites(lines[line], static_cast<ptrdiff_t>(first) + dx); };
  const VSite north = site(0, at_green, 0), south = site(2, at_green, 0);
  const VSite west = site(1, at_green, -1), east = site(1, at_green, 1);
  const VSite own_green = site(1, at_green, 0);
  const VSite horizontal = AtGreen(own_green, west, east, site(4, at_green, -1), site(4, at_green, 1));
  const VSite vertical = AtGreen(own_green, north, south, site(3, at_green, 0), site(5, at_green, 0));

  const VSite nw = site(0, at_other, -1), ne = site(0, at_other, 1);
  const VSite sw = site(2, at_other, -1), se = site(2, at_other, 1);
  const VSite other_green = site(4, at_other, 0);
  const VSite anti = Laplacian(other_green, site(3, at_other, 1), site(5, at_other, -1));
  const VSite main = Laplacian(other_green, site(3, at_other, -1), site(5, at_other, 1));
  const VSite opposite = Adaptive(ne, sw, anti, nw, se, main);

  row_colour = WithSites(hn::LoadU(D8(), lines[1]), horizontal, !starts_green);
  green = hn::LoadU(D8(), lines[4]);
  other_colour = TwoSites(vertical, opposite, !starts_green);
  if constexpr (kBorder) {
    // Bilinear: averages over the neighbours inside the frame.
    const auto outside = OutsideColumns(D8(), x, adaptive);
    const auto left_edge = OutsideColumns(D8(), x, {1, width});
    const auto right_edge = OutsideColumns(D8(), x, {0, width - 1});
    const auto green_sites = GreenSites(D8(), starts_green);
    const auto half = [](VSite a, VSite b) PRISMO_INLINE { return hn::ShiftRight<1>(hn::Add(a, b)); };
    const auto at_edges = [&](VSite inside, VSite west_side, VSite east_side, size_t first) PRISMO_INLINE {
      return hn::IfThenElse(
          left_edge, SiteBytes(east_side, first),
          hn::IfThenElse(right_edge, SiteBytes(west_side, first), SiteBytes(inside, first)));
    };
    const VSite diagonal = hn::ShiftRight<2>(hn::Add(hn::Add(nw, ne), hn::Add(sw, se)));
    const V8 row_average = at_edges(half(west, east), west, east, at_green);
    const V8 other_average = hn::IfThenElse(green_sites, SiteBytes(half(north, south), at_green),
                                            at_edges(diagonal, half(nw, sw), half(ne, se), at_other));
    row_colour = hn::IfThenElse(hn::And(outside, green_sites), row_average, row_colour);
    other_colour = hn::IfThenElse(outside, other_average, other_colour);
  }
}

template <class Sink, StoreKind kStores>
void Colour(const ColourLines& info, const BayerRow& row, const RowTarget& target) {
  const Sink sink{target.plane[0], target.first_column};
  if (kStores == StoreKind::kStreaming && sink.PixelsToAlign(row.columns.begin) == kLanes) {
    return Colour<Sink, StoreKind::kCached>(info, row, target);
  }
  const uint8_t* const lines[6] = {LoadedAlone(info.raw[0]),    LoadedAlone(info.raw[1]),
                                   LoadedAlone(info.raw[2]),    LoadedAlone(info.greens[0]),
                                   LoadedAlone(info.greens[1]), LoadedAlone(info.greens[2])};
  CoverRow<kStores, 6>(
      lines, row, info.adaptive, sink,
      [](const uint8_t* const(&at)[6], auto starts_green, V8& row_colour, V8& green, V8& other_colour)
          PRISMO_INLINE { ColourBlock<false>(at, 0, 0, {}, starts_green, row_colour, green, other_colour); },
      [&](const uint8_t* const(&at)[6], size_t x, auto starts_green, V8& row_colour, V8& green,
          V8& other_colour) PRISMO_INLINE {
        ColourBlock<true>(at, x, row.width, info.adaptive, starts_green, row_colour, green, other_colour);
      });
}

void PutBgra(const uint8_t* greens, ColumnRange columns, const RowTarget& target) {
  const D32 d;
  const hn::Rebind<uint8_t, D32> d_bytes;
  constexpr size_t kPixels = hn::MaxLanes(D32());
  uint8_t* dst = target.plane[0] + size_t{4} * (columns.begin - target.first_column);
  size_t x = columns.begin;
  if constexpr (kPixels > 1) {  // the one-lane target has no vector of four bytes
    for (; x + kPixels <= columns.end; x += kPixels, dst += 4 * kPixels) {
      const auto green =
          hn::BitCast(D8(), hn::ShiftLeft<8>(hn::PromoteTo(d, hn::LoadU(d_bytes, greens + x))));
      const auto others = hn::And(hn::LoadU(D8(), dst), hn::BitCast(D8(), hn::Set(d, 0xFFFF00FFu)));
      hn::StoreU(hn::Or(others, green), D8(), dst);
    }
  }
  for (; x < columns.end; ++x, dst += 4) dst[1] = greens[x];
}

void PutBgr(const uint8_t* greens, ColumnRange columns, const RowTarget& target) {
  const D8 d;
  uint8_t* dst = target.plane[0] + size_t{3} * (columns.begin - target.first_column);
  size_t x = columns.begin;
  for (; x + kLanes <= columns.end; x += kLanes, dst += 3 * kLanes) {
    V8 blue, green, red;
    hn::LoadInterleaved3(d, dst, blue, green, red);
    hn::StoreInterleaved3(blue, hn::LoadU(d, greens + x), red, d, dst);
  }
  for (; x < columns.end; ++x, dst += 3) dst[1] = greens[x];
}

constexpr AcpiKernels kKernels = {
    .green = &Green,
    .bgra = {&Colour<BgraSink, StoreKind::kCached>, &Colour<BgraSink, StoreKind::kStreaming>},
    .bgr = {&Colour<BgrSink, StoreKind::kCached>, &Colour<BgrSink, StoreKind::kStreaming>},
    .put_bgra = &PutBgra,
    .put_bgr = &PutBgr};

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

#include "reference/bayer.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <stdexcept>

#include "reference/row_split.h"

namespace prismo::reference {
namespace {

struct Point {
  int64_t x, y;
};

// The mean of the points that lie inside the frame: one, two or four of them. Every average has its own shift
// count, of which the low five bits matter; the low byte of the result is kept.
uint8_t Mean(const Mosaic& mosaic, std::initializer_list<Point> points) {
  uint32_t sum = 0;
  uint32_t count = 0;
  for (const Point& point : points) {
    if (!mosaic.Holds(point.x, point.y)) continue;
    sum += static_cast<uint32_t>(mosaic.Sample(point.x, point.y));
    ++count;
  }
  const uint32_t halvings = count == 4 ? 2 : count == 2 ? 1 : 0;
  if (count != 1u << halvings) throw std::logic_error("no mean of this many samples");
  return static_cast<uint8_t>(ShiftRight(sum, (mosaic.words ? mosaic.shift : 0u) + halvings));
}

uint8_t Own(const Mosaic& mosaic, int64_t x, int64_t y) { return Mean(mosaic, {{x, y}}); }
uint8_t Horizontal(const Mosaic& mosaic, int64_t x, int64_t y) {
  return Mean(mosaic, {{x - 1, y}, {x + 1, y}});
}
uint8_t Vertical(const Mosaic& mosaic, int64_t x, int64_t y) {
  return Mean(mosaic, {{x, y - 1}, {x, y + 1}});
}
uint8_t Diagonal(const Mosaic& mosaic, int64_t x, int64_t y) {
  return Mean(mosaic, {{x - 1, y - 1}, {x + 1, y - 1}, {x - 1, y + 1}, {x + 1, y + 1}});
}

// On an edge only the two neighbours along the edge count, not the one that points into the picture.
uint8_t GreenAround(const Mosaic& mosaic, int64_t x, int64_t y) {
  const bool side = x == 0 || x == int64_t{mosaic.width} - 1;
  const bool end = y == 0 || y == int64_t{mosaic.height} - 1;
  if (side && !end) return Vertical(mosaic, x, y);
  if (end && !side) return Horizontal(mosaic, x, y);
  return Mean(mosaic, {{x, y - 1}, {x, y + 1}, {x - 1, y}, {x + 1, y}});
}

// Puts the colours of a pixel in their places: `row_colour` is the colour of a row of this kind, or for a
// green pixel of its horizontal neighbours, `other_colour` the remaining one.
Pixel Compose(Site site, uint8_t row_colour, uint8_t green, uint8_t other_colour) {
  const bool blue_row = site == Site::kBlue || site == Site::kGreenInBlueRow;
  return blue_row ? Pixel{row_colour, green, other_colour} : Pixel{other_colour, green, row_colour};
}

bool IsGreen(Site site) { return site == Site::kGreenInBlueRow || site == Site::kGreenInRedRow; }

uint8_t Clamp(int32_t value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }

// Shifts that round towards minus infinity, also below zero.
int32_t FloorQuarter(int32_t value) { return value >> 2; }
int32_t FloorEighth(int32_t value) { return value >> 3; }
static_assert(-1 >> 2 == -1 && -5 >> 3 == -1);

bool InAdaptiveRegion(const Mosaic& mosaic, int64_t x, int64_t y) {
  return x >= 2 && x <= int64_t{mosaic.width} - 3 && y >= 2 && y <= int64_t{mosaic.height} - 3;
}

// Greens of a frame or of a rectangle of it.
class GreenPlane {
 public:
  GreenPlane(uint32_t left, uint32_t top, uint32_t width, uint32_t height)
      : left_(left), top_(top), width_(width), greens_(size_t{width} * height) {}

  uint8_t& At(int64_t x, int64_t y) {
    return greens_.at(static_cast<size_t>((y - top_) * width_ + (x - left_)));
  }

 private:
  int64_t left_, top_, width_;
  std::vector<uint8_t> greens_;
};

Pixel AdaptivePixel(const Mosaic& mosaic, GreenPlane& g, int64_t x, int64_t y, AdaptiveCounts* counts) {
  AdaptiveCounts ignored;
  AdaptiveCounts& count = counts ? *counts : ignored;
  const auto store = [&](int32_t value) {
    count.colour_below_0 += value < 0;
    count.colour_above_255 += value > 255;
    return Clamp(value);
  };

  const Site site = mosaic.SiteAt(x, y);
  const int32_t green = g.At(x, y);
  if (IsGreen(site)) {
    const int32_t west_east = mosaic.Sample(x - 1, y) + mosaic.Sample(x + 1, y);
    const int32_t north_south = mosaic.Sample(x, y - 1) + mosaic.Sample(x, y + 1);
    const uint8_t horizontal = store(FloorQuarter(2 * (west_east + green) - g.At(x - 1, y) - g.At(x + 1, y)));
    const uint8_t vertical = store(FloorQuarter(2 * (north_south + green) - g.At(x, y - 1) - g.At(x, y + 1)));
    return Compose(site, horizontal, static_cast<uint8_t>(green), vertical);
  }

  const int32_t ne = mosaic.Sample(x + 1, y - 1), sw = mosaic.Sample(x - 1, y + 1);
  const int32_t nw = mosaic.Sample(x - 1, y - 1), se = mosaic.Sample(x + 1, y + 1);
  const int32_t anti_laplacian = 2 * green - g.At(x + 1, y - 1) - g.At(x - 1, y + 1);
  const int32_t main_laplacian = 2 * green - g.At(x - 1, y - 1) - g.At(x + 1, y + 1);
  const int32_t anti_gradient = std::abs(ne - sw) + std::abs(anti_laplacian);
  const int32_t main_gradient = std::abs(nw - se) + std::abs(main_laplacian);
  int32_t opposite;
  if (anti_gradient < main_gradient) {
    ++count.anti_diagonal;
    opposite = FloorQuarter(2 * (ne + sw) + anti_laplacian);
  } else if (anti_gradient > main_gradient) {
    ++count.main_diagonal;
    opposite = FloorQuarter(2 * (nw + se) + main_laplacian);
  } else {
    ++count.diagonal_tie;
    opposite = FloorEighth(2 * (ne + sw + nw + se) + anti_laplacian + main_laplacian);
  }
  return Compose(site, Own(mosaic, x, y), static_cast<uint8_t>(green), store(opposite));
}

GreenPlane AllGreens(const Mosaic& mosaic, AdaptiveCounts* counts) {
  GreenPlane greens(0, 0, mosaic.width, mosaic.height);
  for (uint32_t y = 0; y < mosaic.height; ++y) {
    for (uint32_t x = 0; x < mosaic.width; ++x) {
      greens.At(x, y) = InAdaptiveRegion(mosaic, x, y) ? AdaptiveGreen(mosaic, x, y, counts)
                                                       : BilinearPixel(mosaic, x, y).g;
    }
  }
  return greens;
}

void BilinearRow(const Mosaic& mosaic, const Picture& picture, uint32_t y) {
  for (uint32_t x = 0; x < mosaic.width; ++x) picture.Put(x, y, BilinearPixel(mosaic, x, y));
  picture.ZeroPad(y);
}

// Rows that a work on the pool converts and whether it finishes: rows first to last of a frame, in pairs.
RowSplit PairedRows(int64_t first, int64_t last, int32_t threads) {
  return SplitRows(static_cast<int32_t>(first), static_cast<int32_t>(last), threads, 2);
}

bool OnRing(const Rectangle& rectangle, uint32_t x, uint32_t y) {
  return x == 0 || y == 0 || x == rectangle.width - 1 || y == rectangle.height - 1;
}

}  // namespace

const char* NameOf(Phase phase) {
  static constexpr const char* kNames[] = {"BG", "GB", "GR", "RG"};
  return kNames[static_cast<size_t>(phase)];
}

Phase PhaseFrom(Phase phase, uint32_t x, uint32_t y) {
  using enum Phase;
  if (x % 2 == 1) phase = phase == kBg ? kGb : phase == kGb ? kBg : phase == kGr ? kRg : kGr;
  if (y % 2 == 1) phase = phase == kBg ? kGr : phase == kGr ? kBg : phase == kGb ? kRg : kGb;
  return phase;
}

bool Mosaic::Holds(int64_t x, int64_t y) const { return x >= 0 && x < width && y >= 0 && y < height; }

int32_t Mosaic::Sample(int64_t x, int64_t y) const {
  if (!Holds(x, y)) throw std::out_of_range("sample outside the frame");
  const size_t index = static_cast<size_t>(y) * width + static_cast<size_t>(x);
  return words ? WordAt(samples, index) : ByteAt(samples, index);
}

Site Mosaic::SiteAt(int64_t x, int64_t y) const {
  using enum Site;
  static constexpr Site kTiles[4][4] = {// top left, top right, bottom left, bottom right
                                        {kBlue, kGreenInBlueRow, kGreenInRedRow, kRed},   // BG
                                        {kGreenInBlueRow, kBlue, kRed, kGreenInRedRow},   // GB
                                        {kGreenInRedRow, kRed, kBlue, kGreenInBlueRow},   // GR
                                        {kRed, kGreenInRedRow, kGreenInBlueRow, kBlue}};  // RG
  return kTiles[static_cast<size_t>(phase)][y % 2 * 2 + x % 2];
}

Pixel BilinearPixel(const Mosaic& mosaic, uint32_t x, uint32_t y) {
  const Site site = mosaic.SiteAt(x, y);
  if (IsGreen(site)) {
    return Compose(site, Horizontal(mosaic, x, y), Own(mosaic, x, y), Vertical(mosaic, x, y));
  }
  return Compose(site, Own(mosaic, x, y), GreenAround(mosaic, x, y), Diagonal(mosaic, x, y));
}

uint8_t AdaptiveGreen(const Mosaic& mosaic, uint32_t column, uint32_t row, AdaptiveCounts* counts) {
  AdaptiveCounts ignored;
  AdaptiveCounts& count = counts ? *counts : ignored;
  const int64_t x = column, y = row;
  const int32_t own = mosaic.Sample(x, y);
  if (IsGreen(mosaic.SiteAt(x, y))) return static_cast<uint8_t>(own);

  const int32_t n = mosaic.Sample(x, y - 1), s = mosaic.Sample(x, y + 1);
  const int32_t w = mosaic.Sample(x - 1, y), e = mosaic.Sample(x + 1, y);
  const int32_t column_laplacian = 2 * own - mosaic.Sample(x, y - 2) - mosaic.Sample(x, y + 2);
  const int32_t row_laplacian = 2 * own - mosaic.Sample(x - 2, y) - mosaic.Sample(x + 2, y);
  const int32_t column_gradient = std::abs(n - s) + std::abs(column_laplacian);
  const int32_t row_gradient = std::abs(w - e) + std::abs(row_laplacian);
  int32_t green;
  if (column_gradient < row_gradient) {
    ++count.along_column;
    green = FloorQuarter(2 * (n + s) + column_laplacian);
  } else if (column_gradient > row_gradient) {
    ++count.along_row;
    green = FloorQuarter(2 * (w + e) + row_laplacian);
  } else {
    ++count.green_tie;
    green = FloorEighth(2 * (n + s + w + e) + column_laplacian + row_laplacian);
  }
  count.green_below_0 += green < 0;
  count.green_above_255 += green > 255;
  return Clamp(green);
}

void Bilinear(const Mosaic& mosaic, Output output, void* dst) {
  const Picture picture(dst, output, mosaic.width);
  for (uint32_t y = 0; y < mosaic.height; ++y) BilinearRow(mosaic, picture, y);
}

void Adaptive(const Mosaic& mosaic, Output output, void* dst, AdaptiveCounts* counts) {
  const Picture picture(dst, output, mosaic.width);
  GreenPlane greens = AllGreens(mosaic, counts);
  for (uint32_t y = 0; y < mosaic.height; ++y) {
    for (uint32_t x = 0; x < mosaic.width; ++x) {
      picture.Put(x, y,
                  InAdaptiveRegion(mosaic, x, y) ? AdaptivePixel(mosaic, greens, x, y, counts)
                                                 : BilinearPixel(mosaic, x, y));
    }
    picture.ZeroPad(y);
  }
}

uint32_t PooledBilinear(const Mosaic& mosaic, Output output, void* dst, int32_t threads) {
  const Picture picture(dst, output, mosaic.width);
  BilinearRow(mosaic, picture, 0);
  BilinearRow(mosaic, picture, mosaic.height - 1);
  const RowSplit split = PairedRows(1, int64_t{mosaic.height} - 2, threads);
  for (const Rows& rows : split.blocks) {
    for (int32_t i = 0; i < rows.count; ++i)
      BilinearRow(mosaic, picture, static_cast<uint32_t>(rows.first + i));
  }
  return split.Status();
}

uint32_t PooledAdaptive(const Mosaic& mosaic, Output output, void* dst, int32_t threads) {
  const Picture picture(dst, output, mosaic.width);
  const uint32_t width = mosaic.width, height = mosaic.height;
  for (const uint32_t y : {0u, 1u, height - 2, height - 1}) BilinearRow(mosaic, picture, y);

  GreenPlane greens = AllGreens(mosaic, nullptr);
  const RowSplit split = PairedRows(2, int64_t{height} - 3, threads);
  for (const Rows& rows : split.blocks) {
    for (int32_t i = 0; i < rows.count; ++i) {
      const uint32_t y = static_cast<uint32_t>(rows.first + i);
      for (uint32_t x = 0; x < width; ++x) {
        if (!InAdaptiveRegion(mosaic, x, y)) {
          picture.Put(x, y, BilinearPixel(mosaic, x, y));
        } else if (split.finishes) {
          picture.Put(x, y, AdaptivePixel(mosaic, greens, x, y, nullptr));
        } else {  // the work for red and blue is never queued
          picture.PutGreen(x, y, greens.At(x, y));
        }
      }
      picture.ZeroPad(y);
    }
  }
  return split.Status();
}

void AdaptiveRectangle(const Mosaic& mosaic, const Rectangle& rectangle, Output output, void* dst) {
  const Picture picture(dst, output, rectangle.dst_width);
  GreenPlane greens(rectangle.left, rectangle.top, rectangle.width, rectangle.height);
  for (uint32_t y = 0; y < rectangle.height; ++y) {
    for (uint32_t x = 0; x < rectangle.width; ++x) {
      greens.At(rectangle.left + x, rectangle.top + y) =
          AdaptiveGreen(mosaic, rectangle.left + x, rectangle.top + y);
    }
  }
  for (uint32_t y = 0; y < rectangle.height; ++y) {
    for (uint32_t x = 0; x < rectangle.width; ++x) {
      const uint32_t src_x = rectangle.left + x, src_y = rectangle.top + y;
      Pixel pixel;
      if (OnRing(rectangle, x, y)) {
        pixel = BilinearPixel(mosaic, src_x, src_y);
        pixel.g = greens.At(src_x, src_y);
      } else {
        pixel = AdaptivePixel(mosaic, greens, src_x, src_y, nullptr);
      }
      picture.Put(rectangle.dst_left + x, rectangle.dst_top + y, pixel);
    }
  }
}

uint32_t PooledAdaptiveRectangle(const Mosaic& mosaic, const Rectangle& rectangle, Output output, void* dst,
                                 int32_t threads) {
  const int64_t first = rectangle.top, last = int64_t{rectangle.top} + rectangle.height - 1;
  const RowSplit greens = PairedRows(first, last, threads);
  if (greens.finishes) {
    AdaptiveRectangle(mosaic, rectangle, output, dst);
    return PairedRows(first + 1, last - 1, threads).Status();
  }
  const Picture picture(dst, output, rectangle.dst_width);
  for (const Rows& rows : greens.blocks) {
    for (int32_t i = 0; i < rows.count; ++i) {
      const uint32_t y = static_cast<uint32_t>(rows.first + i);
      for (uint32_t x = 0; x < rectangle.width; ++x) {
        picture.PutGreen(rectangle.dst_left + x, rectangle.dst_top + y - rectangle.top,
                         AdaptiveGreen(mosaic, rectangle.left + x, y));
      }
    }
  }
  return greens.Status();
}

size_t PlanePitch(uint32_t width, bool pad) { return size_t{width} + (pad ? PadBytes(width) : 0); }

namespace {

class PlaneWriter {
 public:
  PlaneWriter(const Mosaic& mosaic, bool pad, const Planes& planes)
      : mosaic_(mosaic), pitch_(PlanePitch(mosaic.width, pad)), planes_(planes) {}

  void Put(uint32_t x, uint32_t y) const {
    const Pixel pixel = BilinearPixel(mosaic_, x, y);
    const size_t at = y * pitch_ + x;
    planes_.b[at] = pixel.b;
    planes_.g[at] = pixel.g;
    planes_.r[at] = pixel.r;
  }

  void EdgeRow(uint32_t y) const {
    for (uint32_t x = 0; x < mosaic_.width; ++x) Put(x, y);
    ZeroPad(y);
  }

  // The left pixel, whole pairs of pixels, the right pixel: an odd width leaves its last but one column out.
  void MiddleRow(uint32_t y) const {
    for (uint32_t x = 0; x < mosaic_.width; ++x) {
      if (mosaic_.width % 2 == 0 || x != mosaic_.width - 2) Put(x, y);
    }
  }

  void ZeroPad(uint32_t y) const {
    for (size_t x = mosaic_.width; x < pitch_; ++x) {
      planes_.b[y * pitch_ + x] = planes_.g[y * pitch_ + x] = planes_.r[y * pitch_ + x] = 0;
    }
  }

 private:
  const Mosaic& mosaic_;
  size_t pitch_;
  Planes planes_;
};

}  // namespace

void BayerPlanes(const Mosaic& mosaic, bool pad, const Planes& planes) {
  const PlaneWriter writer(mosaic, pad, planes);
  writer.EdgeRow(0);
  writer.EdgeRow(mosaic.height - 1);
  for (uint32_t y = 1; y + 1 < mosaic.height; ++y) {
    writer.MiddleRow(y);
    writer.ZeroPad(y);
  }
}

uint32_t PooledBayerPlanes(const Mosaic& mosaic, bool pad, const Planes& planes, int32_t threads) {
  const PlaneWriter writer(mosaic, pad, planes);
  writer.EdgeRow(0);
  writer.EdgeRow(mosaic.height - 1);
  const RowSplit split = PairedRows(1, int64_t{mosaic.height} - 2, threads);
  for (const Rows& rows : split.blocks) {
    for (int32_t i = 0; i < rows.count; ++i) writer.MiddleRow(static_cast<uint32_t>(rows.first + i));
  }
  return split.Status();
}

}  // namespace prismo::reference

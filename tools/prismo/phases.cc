#include "phases.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace prismo::tool {
namespace {

// Blocks are compared with their neighbours, a pair of them is a tile, and a place has the tiles of a cell of
// a grid over the frame.
constexpr uint32_t kBlock = 8;
constexpr uint32_t kTileWidth = 2 * kBlock, kTileHeight = kBlock;
constexpr uint32_t kMostPlacesASide = 16;
constexpr unsigned kFewestPlaces = 16;
constexpr double kSignificance = 0.001;
constexpr double kMajority = 0.75;
// The green sites of one sensor, between red and blue neighbours, may differ by this much of the brightness.
constexpr double kMismatchOfGreens = 0.05;

// What a block says: how much the second site of a diagonal is above the first, and its brightness.
struct Block {
  double falling = 0, rising = 0, brightness = 0;

  Block& operator+=(const Block& other) {
    falling += other.falling;
    rising += other.rising;
    brightness += other.brightness;
    return *this;
  }
};

class Samples {
 public:
  explicit Samples(const Frame& frame)
      : bytes_(frame.bytes.data()),
        pitch_(RowBytes(*frame.format, frame.width)),
        wide_(SampleBytes(*frame.format) == 2) {}

  int At(uint32_t x, uint32_t y) const {
    const uint8_t* row = bytes_ + pitch_ * y;
    return wide_ ? row[2 * x] | row[2 * x + 1] << 8 : row[x];
  }

  // Sites without the outermost, whose neighbours belong to other blocks: blocks share no sample. A site is
  // compared with the mean of its four diagonal neighbours, which see the other site's colour: slopes of
  // brightness fall out. Counted positively at the upper and negatively at the lower site, curves do, too.
  Block Examine(uint32_t left, uint32_t top) const {
    constexpr uint32_t kInner = kBlock - 2;
    Block block;
    for (uint32_t y = top + 1; y <= top + kInner; ++y) {
      for (uint32_t x = left + 1; x <= left + kInner; ++x) {
        const int own = At(x, y);
        const int others = At(x - 1, y - 1) + At(x + 1, y - 1) + At(x - 1, y + 1) + At(x + 1, y + 1);
        const double difference = (y % 2 ? -1 : 1) * (others / 4.0 - own);
        (x % 2 == y % 2 ? block.falling : block.rising) += difference;
        block.brightness += own;
      }
    }
    constexpr double kSites = kInner * kInner;
    return {block.falling / (kSites / 2), block.rising / (kSites / 2), block.brightness / kSites};
  }

 private:
  const uint8_t* bytes_;
  size_t pitch_;
  bool wide_;
};

// Sums over the tiles of a place: of products of the two blocks of a tile, and their power.
struct Place {
  double falling = 0, rising = 0, brightness = 0;
  double power = 0;

  // From -1 (the rising diagonal is green) to 1 (the falling one is).
  double Vote() const {
    const double difference = rising - falling;
    const double mismatch = kMismatchOfGreens * kMismatchOfGreens * std::max(0.0, brightness);
    return std::abs(difference) <= mismatch ? 0 : difference / power;
  }
};

}  // namespace

Diagonal GreenDiagonal(const Format& bayer) {
  return PatternOfRow(bayer, 0).channels[0] == kGreen ? Diagonal::kFalling : Diagonal::kRising;
}

PhaseEvidence ExaminePhases(const Frame& frame) {
  const Samples samples(frame);
  const uint32_t columns = frame.width / kTileWidth, rows = frame.height / kTileHeight;
  std::vector<std::array<Block, 2>> tiles(size_t{columns} * rows);
  Block mean;
  for (size_t i = 0; i < tiles.size(); ++i) {
    const auto left = static_cast<uint32_t>(i % columns) * kTileWidth;
    const auto top = static_cast<uint32_t>(i / columns) * kTileHeight;
    tiles[i] = {samples.Examine(left, top), samples.Examine(left + kBlock, top)};
    mean += tiles[i][0];
    mean += tiles[i][1];
  }

  PhaseEvidence evidence{0, 0, 0.5, 1, false, false, false};
  const auto blocks = static_cast<double>(2 * tiles.size());
  const uint32_t across = std::min(columns, kMostPlacesASide), down = std::min(rows, kMostPlacesASide);
  evidence.places = across * down;
  evidence.enough_places = evidence.places >= kFewestPlaces;

  // Colour goes on from a block to the one beside it, noise does not: the mean product of the two is the
  // variance of colour alone. What all blocks have in common is no colour of the scene, it may be the
  // sensor's.
  std::vector<Place> places(evidence.places);
  for (size_t i = 0; i < tiles.size(); ++i) {
    Place& place = places[i / columns * down / rows * across + i % columns * across / columns];
    std::array<double, 2> falling, rising, brightness;
    for (size_t half = 0; half < 2; ++half) {
      falling[half] = tiles[i][half].falling - mean.falling / blocks;
      rising[half] = tiles[i][half].rising - mean.rising / blocks;
      brightness[half] = tiles[i][half].brightness - mean.brightness / blocks;
      place.power += (falling[half] * falling[half] + rising[half] * rising[half]) / 2;
    }
    place.falling += falling[0] * falling[1];
    place.rising += rising[0] * rising[1];
    place.brightness += brightness[0] * brightness[1];
  }

  // If no diagonal were special, each vote would be as likely as its opposite, and Hoeffding's inequality
  // would bound the probability of so large a sum of such votes, whatever the scene and the noise.
  double sum = 0, weight = 0, squares = 0;
  for (const Place& place : places) {
    const double vote = place.Vote();
    evidence.voters += vote != 0;
    sum += vote;
    weight += std::abs(vote);
    squares += vote * vote;
  }
  if (evidence.voters == 0) return evidence;
  evidence.for_falling = (1 + sum / weight) / 2;
  evidence.chance = std::min(1.0, 2 * std::exp(-sum * sum / squares / 2));
  evidence.beyond_chance = evidence.chance <= kSignificance;
  evidence.clear_majority = std::max(evidence.for_falling, 1 - evidence.for_falling) >= kMajority;
  return evidence;
}

}  // namespace prismo::tool

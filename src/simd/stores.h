// Choice of the kind of store.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace prismo::simd {

// kStreaming bypasses the caches: right for results that the cache could not hold anyway.
enum class StoreKind : uint8_t { kCached, kStreaming };

// What takes a conversion's time in the cache. kBoth: arithmetic that kAvx512Vbmi has the instructions for.
// Several threads of the pool share the arithmetic: there it is the memory for all but the adaptive demosaic
// (measured with two threads at 5 megapixels: 0.5 to 0.65 of the time where it stays in the cache; adaptive
// the same).
enum class TimeGoesTo : uint8_t { kMemory, kBoth, kArithmetic };

// The bytes that a conversion reads and writes.
struct Traffic {
  size_t read;
  size_t written;

  constexpr size_t Bytes() const { return read + written; }
};

// Which pieces of a target are streamed: all, none, or as many of them as the cache has no room for. Pieces
// of the two kinds follow each other, so that both ways to the memory are used.
class StorePlan {
 public:
  static constexpr size_t kParts = 16;
  // Enough for what begins and ends a streamed run, and for lines that plain stores fetch ahead, not to
  // count. With single rows of 2 to 10 KB as pieces those took 1.03 to 1.35 times as long.
  static constexpr size_t kPiecePixels = 65536;

  // NOLINTNEXTLINE(google-explicit-constructor): one kind is a plan
  constexpr StorePlan(StoreKind kind = StoreKind::kCached)
      : streamed_(kind == StoreKind::kStreaming ? kParts : 0) {}

  // This many of each kParts pieces are streamed. Pieces hold whole groups of pixels.
  static constexpr StorePlan Streaming(size_t parts, size_t piece_pixels = kPiecePixels) {
    StorePlan plan;
    plan.streamed_ = static_cast<uint32_t>(std::min(parts, kParts));
    plan.piece_pixels_ = static_cast<uint32_t>(piece_pixels);
    return plan;
  }

  constexpr StoreKind OfPiece(size_t piece) const {
    return piece % kParts * streamed_ % kParts + streamed_ >= kParts ? StoreKind::kStreaming
                                                                     : StoreKind::kCached;
  }
  // Rows, groups or whatever else has so many pixels, in a piece.
  constexpr size_t PieceUnits(size_t unit_pixels) const {
    return std::max<size_t>(piece_pixels_ / std::max<size_t>(unit_pixels, 1), 1);
  }
  constexpr StoreKind OfRow(size_t row, size_t row_pixels) const {
    return OfPiece(row / PieceUnits(row_pixels));
  }
  constexpr bool OfOneKind() const { return streamed_ % kParts == 0; }
  constexpr size_t StreamedParts() const { return streamed_; }
  constexpr size_t PiecePixels() const { return piece_pixels_; }

  friend constexpr bool operator==(StorePlan, StorePlan) = default;

 private:
  uint32_t streamed_;
  uint32_t piece_pixels_ = kPiecePixels;
};

// `reach` tells how many times as much cache as others a conversion can count on where the cache is that of a
// whole server socket. What is written is not nothing.
StorePlan PlanStores(const Traffic& traffic, size_t reach = 1, TimeGoesTo time = TimeGoesTo::kMemory);

// The one kind for conversions whose arithmetic leaves streaming stores the time.
StoreKind StoreKindFor(const Traffic& traffic);

// Calls use(kind, first, count) for the pieces of units `begin` to `end` of a target, of so many pixels each.
template <class Use>
void ForEachPiece(StorePlan plan, size_t begin, size_t end, size_t unit_pixels, const Use& use) {
  const size_t piece = plan.OfOneKind() ? std::max<size_t>(end, 1) : plan.PieceUnits(unit_pixels);
  for (size_t count; begin < end; begin += count) {
    count = std::min(piece - begin % piece, end - begin);
    use(plan.OfPiece(begin / piece), begin, count);
  }
}

// Streaming stores are weakly ordered: a row job ends with this before anybody else reads its rows.
void FinishStores(StorePlan plan);

// For tests and benchmarks: forces one plan, or returns to the choice by traffic.
void SetStores(std::optional<StorePlan> plan);

// Whether streamed runs are read and written at several places by turns. Where one cache serves a whole
// server socket, memory gives a processor more when it asks for several pages at once; elsewhere one place is
// as fast or faster.
bool StreamsAtSeveralPlaces();

// For tests: forces the one or the other, or returns to what the processor does best.
void SetSeveralPlaces(std::optional<bool> several);

}  // namespace prismo::simd

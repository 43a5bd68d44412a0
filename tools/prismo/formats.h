// The pixel formats as users name them, and the layout of their frames.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace prismo::tool {

enum class FormatClass { kMono, kBayer, kColour, kYuv };

struct Format {
  std::string_view name;
  uint32_t code;
  FormatClass kind;
};

std::span<const Format> AllFormats();

// By name (case does not matter) or by code ("0x01100011"); throws with suggestions.
const Format& FormatByName(std::string_view name);

// Null for a code that is not in the table.
const Format* FormatByCode(uint32_t code);

// The 8-bit Bayer format of the same phase.
const Format& BayerFormat8(const Format& format);

// The Bayer format of the same depth whose columns or rows start with the other colour.
const Format& BayerFormatShifted(const Format& format, bool columns, bool rows);

std::string_view ClassName(FormatClass kind);
unsigned SampleDepth(const Format& format);
unsigned SampleBytes(const Format& format);
unsigned MaxSample(const Format& format);
bool HasPaddedRows(const Format& format);

// Rows of a width that shares chroma samples between pixels or colours between rows must be a multiple of
// this.
uint32_t WidthUnit(const Format& format);
uint32_t HeightUnit(const Format& format);

// Bytes of a row, its padding included.
uint64_t RowBytes(const Format& format, uint32_t width);
std::string RowRule(const Format& format);

// Which colour each sample of a row belongs to; the pattern repeats along the row.
enum Channel : int8_t { kRed, kGreen, kBlue, kNoChannel };
struct RowPattern {
  std::array<Channel, 4> channels;
  uint32_t period;  // samples after which the pattern repeats
  uint32_t samples_per_pixel;
};
RowPattern PatternOfRow(const Format& format, uint32_t y);

}  // namespace prismo::tool

#include "formats.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <numeric>
#include <vector>

#include "PrismoUtl.h"
#include "error.h"

namespace prismo::tool {
namespace {

using enum FormatClass;

constexpr Format kFormats[] = {
    {"Mono8", PRISMO_MONO8, kMono},           {"Mono10", PRISMO_MONO10, kMono},
    {"Mono12", PRISMO_MONO12, kMono},         {"Mono16", PRISMO_MONO16, kMono},
    {"BayerGR8", PRISMO_BAYER_GR8, kBayer},   {"BayerRG8", PRISMO_BAYER_RG8, kBayer},
    {"BayerGB8", PRISMO_BAYER_GB8, kBayer},   {"BayerBG8", PRISMO_BAYER_BG8, kBayer},
    {"BayerGR10", PRISMO_BAYER_GR10, kBayer}, {"BayerRG10", PRISMO_BAYER_RG10, kBayer},
    {"BayerGB10", PRISMO_BAYER_GB10, kBayer}, {"BayerBG10", PRISMO_BAYER_BG10, kBayer},
    {"BayerGR12", PRISMO_BAYER_GR12, kBayer}, {"BayerRG12", PRISMO_BAYER_RG12, kBayer},
    {"BayerGB12", PRISMO_BAYER_GB12, kBayer}, {"BayerBG12", PRISMO_BAYER_BG12, kBayer},
    {"RGB8", PRISMO_RGB8, kColour},           {"BGR8", PRISMO_BGR8, kColour},
    {"RGB10", PRISMO_RGB10, kColour},         {"BGR10", PRISMO_BGR10, kColour},
    {"RGB12", PRISMO_RGB12, kColour},         {"BGR12", PRISMO_BGR12, kColour},
    {"YUV411_8_UYYVYY", PRISMO_YUV411, kYuv}, {"YUV422_8_UYVY", PRISMO_YUV422, kYuv},
    {"YUV8_UYV", PRISMO_YUV444, kYuv},        {"BGRA8", PRISMO_BGRA8, kColour},
    {"BGRA10", PRISMO_BGRA10, kColour},       {"BGR8PadVexo", PRISMO_BGR8_PADDED, kColour},
    {"Mono8Pad", PRISMO_MONO8_PADDED, kMono},
};

struct Alias {
  std::string_view name;
  uint32_t code;
};
constexpr Alias kAliases[] = {
    {"YUV411", PRISMO_YUV411},
    {"YUV422", PRISMO_YUV422},
    {"YUV444", PRISMO_YUV444},
    {"BGR8Pad", PRISMO_BGR8_PADDED},
};

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = diagonal + (a[i - 1] != b[j - 1]);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row.back();
}

std::string Suggestion(const std::string& lower) {
  size_t best = 4;  // anything farther away is a guess
  std::string names;
  const auto consider = [&](std::string_view name) {
    const size_t distance = EditDistance(lower, Lower(name));
    if (distance > best || distance >= name.size()) return;
    if (distance < best) names.clear();
    best = distance;
    names += (names.empty() ? "" : ", ") + std::string(name);
  };
  for (const Format& format : kFormats) consider(format.name);
  for (const Alias& alias : kAliases) consider(alias.name);
  return names.empty() ? "" : "; did you mean " + names + "?";
}

// The four phases stand in this order in every block of codes: bit 0 differs by a column, the pairs
// GR/GB and RG/BG differ by a row.
constexpr std::string_view kPhases[] = {"GR", "RG", "GB", "BG"};

std::string_view PhaseOf(const Format& format) { return format.name.substr(5, 2); }

const Format& BayerFormatOf(std::string_view phase, unsigned depth) {
  return FormatByName("Bayer" + std::string(phase) + std::to_string(depth));
}

Channel ChannelOf(char colour) { return colour == 'R' ? kRed : colour == 'G' ? kGreen : kBlue; }

}  // namespace

std::span<const Format> AllFormats() { return kFormats; }

const Format& FormatByName(std::string_view name) {
  const std::string lower = Lower(name);
  for (const Format& format : kFormats) {
    if (Lower(format.name) == lower) return format;
  }
  for (const Alias& alias : kAliases) {
    if (Lower(alias.name) == lower) return *FormatByCode(alias.code);
  }
  if (lower.starts_with("0x")) {
    uint32_t code = 0;
    const auto [end, error] = std::from_chars(lower.data() + 2, lower.data() + lower.size(), code, 16);
    const Format* format = FormatByCode(code);
    if (error == std::errc() && end == lower.data() + lower.size() && format) return *format;
  }
  throw Error("unknown pixel format '", name, "'", Suggestion(lower), " ('prismo formats' lists all)");
}

const Format* FormatByCode(uint32_t code) {
  const auto* found = std::ranges::find(kFormats, code, &Format::code);
  return found == std::end(kFormats) ? nullptr : found;
}

const Format& BayerFormat8(const Format& format) { return BayerFormatOf(PhaseOf(format), 8); }

const Format& BayerFormatShifted(const Format& format, bool columns, bool rows) {
  // A column further the pairs swap within a row: GR<->RG, GB<->BG; a row further: GR<->BG, RG<->GB.
  size_t phase = static_cast<size_t>(std::ranges::find(kPhases, PhaseOf(format)) - kPhases);
  if (columns) phase ^= 1;
  if (rows) phase ^= 3;
  return BayerFormatOf(kPhases[phase], SampleDepth(format));
}

std::string_view ClassName(FormatClass kind) {
  switch (kind) {
    case kMono:
      return "mono";
    case kBayer:
      return "Bayer";
    case kColour:
      return "colour";
    case kYuv:
      return "YUV";
  }
  return "";
}

unsigned SampleDepth(const Format& format) {
  const unsigned depth = DataDepth(format.code);
  return depth ? depth : 8;  // the library's query does not know the padded monochrome code
}

unsigned SampleBytes(const Format& format) { return SampleDepth(format) > 8 ? 2 : 1; }

unsigned MaxSample(const Format& format) { return (1u << SampleDepth(format)) - 1; }

bool HasPaddedRows(const Format& format) {
  return format.code == PRISMO_BGR8_PADDED || format.code == PRISMO_MONO8_PADDED;
}

uint32_t WidthUnit(const Format& format) {
  if (format.code == PRISMO_YUV411) return 4;
  return format.code == PRISMO_YUV422 || format.kind == kBayer ? 2 : 1;
}

uint32_t HeightUnit(const Format& format) { return format.kind == kBayer ? 2 : 1; }

uint64_t RowBytes(const Format& format, uint32_t width) {
  const uint64_t bytes = uint64_t{BitPerPixel(format.code)} * width / 8;
  return HasPaddedRows(format) ? (bytes + 3) / 4 * 4 : bytes;
}

std::string RowRule(const Format& format) {
  const unsigned bits = BitPerPixel(format.code);
  std::string rule = bits == 8 ? "W" : bits == 12 ? "3 W / 2" : std::to_string(bits / 8) + " W";
  if (HasPaddedRows(format)) rule += ", rounded up to a multiple of 4";
  return rule;
}

RowPattern PatternOfRow(const Format& format, uint32_t y) {
  switch (format.kind) {
    case kMono:
      return {{kGreen}, 1, 1};
    case kBayer: {
      // The second row of a phase is the first row of the phase one row further.
      const std::string_view row = PhaseOf(y % 2 == 0 ? format : BayerFormatShifted(format, false, true));
      return {{ChannelOf(row[0]), ChannelOf(row[1])}, 2, 1};
    }
    case kColour:
      if (format.name.starts_with("RGB")) return {{kRed, kGreen, kBlue}, 3, 3};
      if (format.name.starts_with("BGRA")) return {{kBlue, kGreen, kRed, kNoChannel}, 4, 4};
      return {{kBlue, kGreen, kRed}, 3, 3};
    case kYuv:
      break;
  }
  throw Error("samples of ", format.name, " are not red, green or blue");
}

}  // namespace prismo::tool

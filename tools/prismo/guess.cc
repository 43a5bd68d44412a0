#include "guess.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fstream>
#include <optional>
#include <regex>
#include <vector>

#include "error.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

constexpr Size kCommonSizes[] = {
    {640, 480},   {656, 492},   {720, 540},   {752, 480},   {768, 512},   {800, 600},   {808, 608},
    {1024, 768},  {1280, 720},  {1280, 960},  {1280, 1024}, {1440, 1080}, {1600, 1200}, {1624, 1240},
    {1920, 1080}, {1920, 1200}, {1936, 1216}, {2048, 1088}, {2048, 1536}, {2064, 1544}, {2048, 2048},
    {2448, 2048}, {2464, 2056}, {2592, 1944}, {2592, 2048}, {3072, 2048}, {3088, 2064}, {3840, 2160},
    {4000, 3000}, {4024, 3036}, {4096, 2160}, {4096, 3000}, {4112, 3008}, {4096, 3072}, {4504, 4504},
    {5120, 4096}, {5120, 5120}, {5320, 4600}, {5328, 4608}, {5472, 3648}, {6576, 4384}, {8192, 5464},
};
struct Pattern {
  std::string_view colours, phase;
};
constexpr Pattern kPatterns[] = {{"RGGB", "RG"}, {"GRBG", "GR"}, {"GBRG", "GB"}, {"BGGR", "BG"}};
constexpr unsigned kBayerDepths[] = {8, 10, 12};
constexpr const char* kWithShift = " with 12 bits and --shift with the others";

std::string Upper(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// The words of a name, which anything but letters and digits separates.
std::vector<std::string> Words(const std::string& name) {
  std::vector<std::string> words(1);
  for (const char c : name) {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      words.back() += c;
    } else if (!words.back().empty()) {
      words.emplace_back();
    }
  }
  return words;
}

std::vector<Size> SizesInName(const std::string& name) {
  std::vector<Size> sizes;
  for (const std::string& word : Words(name)) {
    static const std::regex kSize("[0-9]{1,6}X[0-9]{1,6}");
    if (std::regex_match(word, kSize)) sizes.push_back(ParseSize(word));
  }
  return sizes;
}

// What a name says about the samples.
struct NamedFormats {
  std::vector<const Format*> formats;
  bool phase = false;
};

NamedFormats FormatsInName(const std::string& name) {
  std::string phase;
  std::optional<unsigned> depth;
  for (const std::string& word : Words(name)) {
    for (const Format& format : AllFormats()) {
      if (word == Upper(std::string(format.name))) return {{&format}, true};
    }
    static const std::regex kSamples(
        "(?:BAYER(RG|GR|GB|BG)?|S?(RGGB|GRBG|GBRG|BGGR)|RAW)?([0-9]{1,2})?(BITS?|BPP)?(?:LE)?(P|PACKED)?");
    std::smatch match;
    if (!std::regex_match(word, match, kSamples)) continue;
    const bool about_samples = word.find_first_not_of("0123456789") != std::string::npos;
    if (!about_samples || word == "P" || word == "LE") continue;
    if (match[5].matched)
      throw Error("the name says ", word, ": unpack packed samples into 16-bit words first");
    if (match[1].matched) phase = match[1];
    if (match[2].matched) {
      phase = std::ranges::find(kPatterns, match[2].str(), &Pattern::colours)->phase;
    }
    if (match[3].matched) depth = static_cast<unsigned>(std::stoul(match[3]));
  }
  if (depth && std::ranges::find(kBayerDepths, *depth) == std::end(kBayerDepths)) {
    throw Error("the name says ", *depth, " bits, which no Bayer format has; say --format",
                *depth > 12 ? kWithShift : "");
  }
  NamedFormats named{{}, !phase.empty()};
  for (const unsigned known : kBayerDepths) {
    if (depth && known != *depth) continue;
    named.formats.push_back(&FormatByName(Text("Bayer", named.phase ? phase : "RG", known)));
  }
  return named;
}

unsigned LargestSample(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<unsigned char> bytes(1 << 20);
  unsigned largest = 0;
  while (file) {
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    for (std::streamsize i = 0; i + 1 < file.gcount(); i += 2) {
      const auto at = static_cast<size_t>(i);
      largest = std::max(largest, bytes[at] | unsigned{bytes[at + 1]} << 8);
    }
  }
  return largest;
}

struct Guess {
  const Format* format;
  Size size;
};

std::string Describe(const Guess& guess, bool phase_known) {
  std::string name(guess.format->name);
  if (guess.format->kind == FormatClass::kBayer && !phase_known) name.replace(5, 2, "..");
  return Text(name, " ", guess.size.width, "x", guess.size.height);
}

}  // namespace

GuessedLayout GuessLayout(const fs::path& path, const DumpLayout& given) {
  const uint64_t length = LengthOfFile(path);
  if (length == 0) throw FileError(path, "is empty");
  const std::string name = Upper(path.filename().string());
  NamedFormats formats;
  if (given.format) {
    formats = {{given.format}, true};
  } else {
    try {
      formats = FormatsInName(name);
    } catch (const Error& error) {
      throw FileError(path, error.what());
    }
  }
  std::vector<Size> sizes = given.size ? std::vector{*given.size} : SizesInName(name);
  const bool size_known = !sizes.empty();
  if (!size_known) sizes.assign(std::begin(kCommonSizes), std::end(kCommonSizes));

  std::vector<Guess> guesses;
  for (const Format* format : formats.formats) {
    for (const Size& size : sizes) {
      if (RowBytes(*format, size.width) * size.height == length) guesses.push_back({format, size});
    }
  }
  // Samples that do not fit into the bits of a format are no reason to doubt what was said, but what was
  // guessed.
  if (guesses.size() > 1) {
    const unsigned largest = LargestSample(path);
    std::erase_if(guesses, [&](const Guess& guess) {
      return SampleBytes(*guess.format) == 2 && largest > MaxSample(*guess.format);
    });
    if (guesses.empty()) {
      throw FileError(path, "samples reach ", largest, ", more than 12 bits; say --size, and --format",
                      kWithShift);
    }
  }
  if (guesses.empty()) {
    std::string tried;
    if (size_known) {
      for (const Size& size : sizes)
        tried += Text(tried.empty() ? " of " : ", ", size.width, "x", size.height);
    } else {
      tried = " of a common sensor's size";
    }
    throw FileError(path, "no frame", tried,
                    formats.formats.size() == 1 ? Text(" in ", formats.formats[0]->name) : "", " takes ",
                    length, " bytes; say --size and --format");
  }
  if (guesses.size() > 1) {
    std::string all;
    for (const Guess& guess : guesses) all += (all.empty() ? "" : ", ") + Describe(guess, formats.phase);
    throw FileError(path, "may be ", all, "; say --size and --format");
  }
  return {{guesses[0].size, guesses[0].format}, formats.phase};
}

}  // namespace prismo::tool

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <memory>

#include "commands.h"
#include "error.h"
#include "image_files.h"

namespace prismo::tool {
namespace {

struct CompareOptions {
  std::string first, second;
  uint32_t border = 0;
};

struct Difference {
  uint64_t squares = 0;
  int largest = 0;
  uint32_t x = 0, y = 0;
  int first = 0, second = 0;
};

std::string Psnr(uint64_t squares, uint64_t count) {
  if (squares == 0) return "identical";
  const double mse = static_cast<double>(squares) / static_cast<double>(count);
  std::ostringstream text;
  text << std::fixed << std::setprecision(2) << 10 * std::log10(255 * 255 / mse) << " dB";
  return text.str();
}

void RunCompare(const CompareOptions& options) {
  Picture first = ReadPicture(options.first), second = ReadPicture(options.second);
  if (first.width != second.width || first.height != second.height) {
    throw Error(options.first, " is ", first.width, "x", first.height, ", but ", options.second, " is ",
                second.width, "x", second.height);
  }
  if (2 * uint64_t{options.border} >= std::min(first.width, first.height)) {
    throw Error("a border of ", options.border, " pixels leaves nothing of ", first.width, "x", first.height);
  }
  if (first.channels != second.channels) {
    first = WithColourChannels(std::move(first));
    second = WithColourChannels(std::move(second));
  }
  std::array<Difference, 3> differences;
  for (uint32_t y = options.border; y < first.height - options.border; ++y) {
    for (uint32_t x = options.border; x < first.width - options.border; ++x) {
      for (uint32_t channel = 0; channel < first.channels; ++channel) {
        const int a = first.At(x, y)[channel], b = second.At(x, y)[channel];
        Difference& d = differences[channel];
        d.squares += static_cast<uint64_t>((a - b) * (a - b));
        if (std::abs(a - b) > d.largest) d = {d.squares, std::abs(a - b), x, y, a, b};
      }
    }
  }
  const uint64_t pixels =
      uint64_t{first.width - 2 * options.border} * uint64_t{first.height - 2 * options.border};
  constexpr std::array names{"blue", "green", "red"};
  uint64_t squares = 0;
  for (uint32_t channel = 0; channel < first.channels; ++channel) {
    const Difference& d = differences[channel];
    squares += d.squares;
    std::cout << std::left << std::setw(7) << (first.channels == 1 ? "grey" : names[channel]) << std::setw(12)
              << Psnr(d.squares, pixels);
    if (d.largest) {
      std::cout << "largest difference " << d.largest << " at " << d.x << "," << d.y << " (" << d.first
                << " and " << d.second << ")";
    }
    std::cout << '\n';
  }
  if (first.channels == 3) std::cout << "all    " << Psnr(squares, 3 * pixels) << '\n';
}

}  // namespace

void AddCompareCommand(CLI::App& app) {
  auto options = std::make_shared<CompareOptions>();
  CLI::App* command = app.add_subcommand("compare", "Compare two pictures: PSNR and the largest difference");
  command->add_option("A", options->first, "A BMP or PNG file")->required();
  command->add_option("B", options->second, "A BMP or PNG file")->required();
  command->add_option("--border", options->border, "Leave out this many pixels at every edge");
  command->callback([options] { RunCompare(*options); });
}

}  // namespace prismo::tool

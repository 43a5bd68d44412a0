#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <memory>

#include "commands.h"
#include "conversion.h"
#include "develop.h"
#include "error.h"
#include "guess.h"
#include "image_files.h"
#include "lettering.h"
#include "options.h"
#include "phases.h"
#include "png_file.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

struct ProbeOptions {
  std::string input;
  DumpOptions dump;
  std::string output;
  std::string gain = "auto";
  Development development{0, 0, {}, 2.2};
};

// The same phase under other names. OpenCV goes by the second and third pixel of the second row.
struct PhaseNames {
  std::string_view phase, pattern, opencv;
};
// Phases that differ by red and blue alone stand beside one another.
constexpr std::array<PhaseNames, 4> kPhases{{{"GR", "GRBG", "BayerGB"},
                                             {"GB", "GBRG", "BayerGR"},
                                             {"RG", "RGGB", "BayerBG"},
                                             {"BG", "BGGR", "BayerRG"}}};

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

struct Probed {
  Frame frame;
  bool guessed = false;
  bool phase_known = true;
};

Probed ReadProbed(const fs::path& path, const DumpLayout& given) {
  const bool complete = given.size && given.format;
  try {
    return {ReadFrame(path, given)};
  } catch (const Error&) {
    if (complete || path.extension() == ".rwh") throw;
  }
  const GuessedLayout guess = GuessLayout(path, given);
  return {ReadFrame(path, guess.layout), true, guess.phase_known};
}

const Format& BayerFormat(std::string_view phase, unsigned depth) {
  return FormatByName(Text("Bayer", phase, depth));
}

// A monochrome frame of a camera that has a mosaic after all is one of the cases to probe.
void RequireOneSamplePerPixel(const Frame& frame) {
  const Format& format = *frame.format;
  const bool mono = format.kind == FormatClass::kMono && !HasPaddedRows(format) && SampleDepth(format) <= 12;
  if (format.kind == FormatClass::kBayer || mono) return;
  throw Error(format.name,
              " frames have no Bayer mosaic to probe; only Bayer and Mono8 to Mono12 frames may have");
}

std::string_view Words(Diagonal diagonal) {
  return diagonal == Diagonal::kFalling ? "upper left to lower right" : "upper right to lower left";
}

std::string Pair(Diagonal green, unsigned depth) {
  return green == Diagonal::kFalling ? Text("BayerGR", depth, " or BayerGB", depth)
                                     : Text("BayerRG", depth, " or BayerBG", depth);
}

void PrintGreen(const Probed& probed, const PhaseEvidence& evidence) {
  const unsigned depth = SampleDepth(*probed.frame.format);
  std::cout << "green    ";
  if (!evidence.enough_places) {
    std::cout << "cannot tell: the frame is too small, with " << evidence.places << " places to compare\n";
    return;
  }
  if (evidence.Proves()) {
    std::cout << Words(evidence.Green()) << ": " << Pair(evidence.Green(), depth) << '\n';
  } else {
    std::cout << "cannot tell: "
              << (evidence.beyond_chance ? "places disagree"
                                         : "colours do not differ enough from place to place")
              << '\n';
  }
  std::cout << "         " << evidence.voters << " of " << evidence.places << " places vote";
  if (evidence.voters) {
    std::cout << ", " << std::lround(evidence.Score(evidence.Green())) << " % of their weight for "
              << Words(evidence.Green()) << "\n         (by chance with a probability of at most "
              << std::setprecision(2) << evidence.chance << ")";
  }
  std::cout << '\n';
}

// Whether the format that the frame came with is one of those that the samples prove.
void PrintVerdict(const Probed& probed, const PhaseEvidence& evidence) {
  const Format& format = *probed.frame.format;
  if (!evidence.Proves()) return;
  std::cout << "verdict  ";
  if (format.kind == FormatClass::kMono) {
    std::cout << format.name << " is wrong: the samples have a mosaic\n";
  } else if (!probed.phase_known) {
    std::cout << "nothing says the phase but the samples\n";
  } else if (GreenDiagonal(format) == evidence.Green()) {
    std::cout << format.name << " may be right: it agrees with the samples\n";
  } else {
    std::cout << format.name << " is wrong: green is on the other diagonal\n";
  }
}

// Without proof, noise would make a score of its own.
std::string ScoreText(const PhaseEvidence& evidence, const Format& bayer) {
  return evidence.Proves() ? Text(std::lround(evidence.Score(GreenDiagonal(bayer)))) : "-";
}

void PrintNames(const PhaseEvidence& evidence, unsigned depth) {
  const auto row = [](const auto& name, const auto& pattern, const auto& score, const auto& opencv,
                      const auto& v4l2, const auto& gstreamer) {
    std::cout << std::left << std::setw(11) << name << std::setw(9) << pattern << std::right << std::setw(5)
              << score << "  " << std::left << std::setw(21) << opencv << std::setw(23) << v4l2 << gstreamer
              << '\n';
  };
  std::cout << '\n';
  row("phase", "pattern", "score", "OpenCV", "V4L2", "GStreamer");
  for (const PhaseNames& names : kPhases) {
    const Format& format = BayerFormat(names.phase, depth);
    row(format.name, names.pattern, ScoreText(evidence, format), Text("COLOR_", names.opencv, "2BGR"),
        Text("V4L2_PIX_FMT_S", names.pattern, depth),
        depth == 8 ? Lower(names.pattern) : Text(Lower(names.pattern), depth, "le"));
  }
}

// Panels in two rows: those of a row have green on the same diagonal.
class Sheet {
 public:
  explicit Sheet(const Frame& frame) {
    constexpr uint32_t kMostWidth = 640, kMostHeight = 480, kLeastWidth = 240;
    const auto parts = [](uint32_t whole, uint32_t part) { return (whole + part - 1) / part; };
    reduction_ = std::max({parts(frame.width, kMostWidth), parts(frame.height, kMostHeight), 1u});
    width_ = frame.width / reduction_;
    height_ = frame.height / reduction_;
    if (width_ == 0 || height_ == 0)
      throw Error("a frame of ", frame.width, "x", frame.height, " is too narrow to show");
    enlargement_ = std::clamp(parts(kLeastWidth, width_), 1u, std::max(1u, kMostHeight / height_));
    cell_width_ = std::max(width_ * enlargement_, kLeastWidth) + kGap;
    cell_height_ = height_ * enlargement_ + kCaption + kGap;
    sheet_ = MakePicture(2 * cell_width_ + kGap, 2 * cell_height_ + kGap, 3);
    std::ranges::fill(sheet_.bytes, uint8_t{32});
  }

  void Put(size_t number, const Picture& picture, double gamma, const std::string& caption) {
    Picture panel = Reduced(picture);
    ApplyGamma(panel, gamma);
    const uint32_t left = kGap + static_cast<uint32_t>(number % 2) * cell_width_;
    const uint32_t top = kGap + static_cast<uint32_t>(number / 2) * cell_height_;
    Write(sheet_, left, top, kScale, caption);
    for (uint32_t y = 0; y < height_ * enlargement_; ++y) {
      for (uint32_t x = 0; x < width_ * enlargement_; ++x) {
        std::copy_n(panel.At(x / enlargement_, y / enlargement_), 3, sheet_.At(left + x, top + kCaption + y));
      }
    }
  }

  const Picture& picture() const { return sheet_; }

 private:
  static constexpr uint32_t kScale = 2, kGap = 8, kCaption = kLetterHeight * kScale + 6;

  // Means of squares of pixels.
  Picture Reduced(const Picture& picture) const {
    Picture reduced = MakePicture(width_, height_, 3);
    const uint32_t pixels = reduction_ * reduction_;
    for (uint32_t y = 0; y < height_; ++y) {
      for (uint32_t x = 0; x < width_; ++x) {
        for (uint32_t channel = 0; channel < 3; ++channel) {
          uint32_t sum = pixels / 2;
          for (uint32_t i = 0; i < pixels; ++i) {
            sum += picture.At(x * reduction_ + i % reduction_, y * reduction_ + i / reduction_)[channel];
          }
          reduced.At(x, y)[channel] = static_cast<uint8_t>(sum / pixels);
        }
      }
    }
    return reduced;
  }

  uint32_t reduction_, enlargement_, width_, height_, cell_width_, cell_height_;
  Picture sheet_;
};

Picture DrawPhases(const Frame& frame, const PhaseEvidence& evidence, const Development& development) {
  Sheet sheet(frame);
  for (size_t i = 0; i < kPhases.size(); ++i) {
    Frame developed = frame;
    developed.format = &BayerFormat(kPhases[i].phase, SampleDepth(*frame.format));
    DevelopFrame(developed, development);
    std::string caption = Text("BAYER", kPhases[i].phase, SampleDepth(*frame.format), "  SCORE ",
                               ScoreText(evidence, *developed.format));
    if (evidence.Proves() && GreenDiagonal(*developed.format) != evidence.Green()) caption += "  WRONG";
    sheet.Put(i, Convert(developed, {}, 3), development.gamma, caption);
  }
  return sheet.picture();
}

fs::path OutputOf(const ProbeOptions& options) {
  if (!options.output.empty()) return options.output;
  return fs::path(options.input).stem().string() + "-phases" + (kHasPng ? ".png" : ".bmp");
}

void RunProbe(ProbeOptions options) {
  ProtectInputs({options.input});
  options.development.gain = ParseGain(options.gain);
  const fs::path output = OutputOf(options);
  const FileKind kind = KindOfOutput(output, "");
  if (kind != FileKind::kPng && kind != FileKind::kBmp && kind != FileKind::kJpeg)
    throw FileError(output, "the picture of the phases is a .png, .bmp or .jpg file");
  const Probed probed = ReadProbed(options.input, options.dump.Layout());
  const Frame& frame = probed.frame;
  RequireOneSamplePerPixel(frame);
  const unsigned depth = SampleDepth(*frame.format);
  CheckConvertible({&BayerFormat("RG", depth), frame.width, frame.height, {}});

  const PhaseEvidence evidence = ExaminePhases(frame);
  OutputFile file(output);
  WritePicture(DrawPhases(frame, evidence, options.development), kind, kDefaultJpegQuality, file);
  file.Commit();

  std::cout << "frame    " << options.input << ": ";
  if (probed.phase_known) {
    std::cout << frame.format->name;
  } else {
    std::cout << "Bayer, " << depth << " bits";
  }
  std::cout << " " << frame.width << "x" << frame.height
            << (probed.guessed ? " (a guess by name and length)" : "") << '\n';
  PrintGreen(probed, evidence);
  PrintVerdict(probed, evidence);
  std::cout << "red      cannot be told from blue by the samples alone; look for known colours in\n         "
            << output.string() << '\n';
  PrintNames(evidence, depth);
}

}  // namespace

void AddProbeCommand(CLI::App& app) {
  auto options = std::make_shared<ProbeOptions>();
  CLI::App* command = app.add_subcommand(
      "probe", "Find the Bayer phase of a frame: a picture of all four, and what the samples prove");
  command->add_option("FRAME", options->input, "A raw frame file, or a headerless dump")->required();
  command->add_option("-o,--output", options->output, "The picture (default: FRAME-phases.png, here)");
  options->dump.AddTo(*command);
  command->add_option("--shift", options->development.shift, "Shift every raw sample right by this many bits")
      ->check(CLI::Range(0, 8));
  command->add_option("--black", options->development.black, "Black level to subtract from every raw sample")
      ->check(CLI::Range(0, 65535));
  command->add_option("--gain", options->gain, "Factors R,G,B for raw samples (default: auto)");
  AddGammaOption(*command, options->development.gamma, "Gamma of the picture (default: 2.2)");
  command->callback([options] { RunProbe(*options); });
}

}  // namespace prismo::tool

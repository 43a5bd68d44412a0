#include <CLI/CLI.hpp>
#include <chrono>
#include <deque>
#include <iomanip>
#include <memory>

#include "commands.h"
#include "conversion.h"
#include "develop.h"
#include "error.h"
#include "file_jobs.h"
#include "options.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

struct ConvertOptions {
  FileJobs files;
  DumpOptions dump;
  std::string demosaic;
  std::string rectangle;
  bool planes = false;
  std::string threads;
  std::string gain;
  Development development;
  unsigned quality = kDefaultJpegQuality;
};

std::optional<Demosaic> ParseDemosaic(const std::string& text) {
  if (text.empty()) return {};
  if (text == "bilinear") return Demosaic::kBilinear;
  if (text == "adaptive") return Demosaic::kAdaptive;
  if (text == "none") return Demosaic::kNone;
  throw Error("--demosaic takes bilinear, adaptive or none, not '", text, "'");
}

uint32_t ChannelsFor(FileKind kind, const Frame& frame, const Conversion& conversion,
                     const fs::path& output) {
  const bool grey = IsGrey(frame, conversion);
  switch (kind) {
    case FileKind::kBgr:
      return 3;
    case FileKind::kBgra:
      return 4;
    case FileKind::kGrey:
      if (!grey) throw FileError(output, "a ", frame.format->name, " frame is not grey");
      return 1;
    default:
      return grey ? 1 : 3;
  }
}

fs::path PlaneName(const fs::path& output, const char* colour) {
  return output.parent_path() / (output.stem().string() + "_" + colour + output.extension().string());
}

class Converter {
 public:
  explicit Converter(const ConvertOptions& options)
      : dump_(options.dump.Layout()),
        development_(options.development),
        planes_(options.planes),
        quality_(options.quality) {
    conversion_.demosaic = ParseDemosaic(options.demosaic);
    if (!options.rectangle.empty()) conversion_.rectangle = ParseRectangle(options.rectangle);
    if (!options.gain.empty()) development_.gain = ParseGain(options.gain);
    // Several files at a time use the processors better than several threads for one file.
    const ThreadChoice choice = ThreadChoice::Parse(options.threads);
    parallel_ = std::max(1, choice.count());
    if (!options.files.ToFolder()) conversion_.threads = choice;
    conversion_.threads.Prepare();
  }

  int parallel() const { return parallel_; }

  std::string operator()(const fs::path& input, const fs::path& output, FileKind kind) const {
    Frame frame = ReadFrame(input, dump_);
    DevelopFrame(frame, development_);
    if (HoldsFrame(kind)) return StoreFrame(frame, output, kind);
    return planes_ ? StorePlanes(frame, output, kind) : StorePicture(frame, output, kind);
  }

 private:
  std::string StoreFrame(const Frame& frame, const fs::path& output, FileKind kind) const {
    if (conversion_.demosaic || conversion_.rectangle || planes_ || development_.gamma != 1) {
      throw FileError(output,
                      "holds the frame itself; --demosaic, --rect, --planes and --gamma make pictures");
    }
    WriteFrame(frame, kind, output);
    return Text(output.string(), ": ", frame.format->name, " ", frame.width, "x", frame.height);
  }

  std::string StorePicture(const Frame& frame, const fs::path& output, FileKind kind) const {
    const uint32_t channels = ChannelsFor(kind, frame, conversion_, output);
    Picture picture = PictureFor(frame, conversion_, channels);
    const auto start = std::chrono::steady_clock::now();
    ConvertInto(picture, frame, conversion_);
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    ApplyGamma(picture, development_.gamma);
    OutputFile file(output);
    WritePicture(picture, kind, quality_, file);
    file.Commit();
    return Text(output.string(), ": ", picture.width, "x", picture.height, Source(frame), ", converted in ",
                std::fixed, std::setprecision(2), time.count(), " ms on ",
                conversion_.threads.Description(picture.height));
  }

  std::string StorePlanes(const Frame& frame, const fs::path& output, FileKind kind) const {
    if (kind == FileKind::kBgr || kind == FileKind::kBgra) {
      throw FileError(output, "a plane is grey; use .grey, .bmp, .png or .jpg");
    }
    if (IsStandardOutput(output)) throw FileError("standard output", "takes one file, not three planes");
    auto planes = ConvertToPlanes(frame, conversion_);
    constexpr std::array colours{"blue", "green", "red"};
    std::deque<OutputFile> files;
    for (size_t i = 0; i < planes.size(); ++i) {
      ApplyGamma(planes[i], development_.gamma);
      WritePicture(planes[i], kind, quality_, files.emplace_back(PlaneName(output, colours[i])));
    }
    for (OutputFile& file : files) file.Commit();
    return Text(PlaneName(output, "blue").string(), ", ..._green, ..._red: ", planes[0].width, "x",
                planes[0].height, Source(frame));
  }

  std::string Source(const Frame& frame) const {
    const bool reduced = conversion_.demosaic == Demosaic::kAdaptive || conversion_.rectangle;
    return Text(
        " from ", frame.format->name,
        reduced && SampleDepth(*frame.format) > 8 ? " reduced to 8 bits before the adaptive demosaic" : "");
  }

  DumpLayout dump_;
  Conversion conversion_;
  Development development_;
  bool planes_;
  unsigned quality_;
  int parallel_;
};

void RunConvert(const ConvertOptions& options) {
  const Converter converter(options);
  options.files.Run(FileKind::kBmp, converter.parallel(), converter);
}

}  // namespace

void AddConvertCommand(CLI::App& app) {
  auto options = std::make_shared<ConvertOptions>();
  CLI::App* command =
      app.add_subcommand("convert", "Convert raw frames to pictures, or between kinds of raw file");
  command->add_option("INPUT", options->files.inputs, "Raw frame files (.rwh) or headerless dumps")
      ->required();
  command->add_option("-o,--output", options->files.output, "A file, or a folder for several inputs")
      ->required();
  command->add_option(
      "--as", options->files.kind_name,
      "Kind of output where no extension says it: bmp, png, jpg, bgr, bgra, grey, rwh or raw");
  command->add_flag("--skip-existing", options->files.skip_existing,
                    "Leave out inputs whose output is there and no older, as after an interruption");
  options->dump.AddTo(*command);
  command->add_option("--demosaic", options->demosaic, "bilinear (default), adaptive or none");
  command->add_option("--rect", options->rectangle,
                      "Demosaic the rectangle LEFT,TOP,WIDTH,HEIGHT only (adaptive)");
  command->add_flag("--planes", options->planes, "Write the blue, green and red plane to a file each");
  command->add_option("--threads", options->threads,
                      "'caller', or the number of threads (default: the processors); several files are "
                      "converted that many at a time");
  command->add_option("--shift", options->development.shift, "Shift every raw sample right by this many bits")
      ->check(CLI::Range(0, 8));
  command->add_option("--black", options->development.black, "Black level to subtract from every raw sample")
      ->check(CLI::Range(0, 65535));
  command->add_option("--gain", options->gain,
                      "Factors for raw samples: R,G,B, one number, or 'auto' (grey world)");
  AddGammaOption(*command, options->development.gamma, "Gamma of the picture, 2.2 for most screens");
  command->add_option("--quality", options->quality, "Quality of JPEG files")->check(CLI::Range(0, 100));
  command->callback([options] { RunConvert(*options); });
}

}  // namespace prismo::tool

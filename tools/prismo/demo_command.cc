#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <deque>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>

#include "commands.h"
#include "conversion.h"
#include "develop.h"
#include "error.h"
#include "image_files.h"
#include "options.h"
#include "png_file.h"
#include "scene.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

struct DemoOptions {
  std::string input;
  DumpOptions dump;
  std::string folder = "demo-output";
  std::string gain = "auto";
  Development development{0, 0, {}, 2.2};
};

constexpr uint32_t kDetailWidth = 160;
constexpr uint32_t kDetailHeight = 120;
constexpr uint32_t kEnlargement = 4;

struct Point {
  uint32_t x, y;
};

// Pixels of a detail as squares.
void Enlarge(const Picture& from, Point corner, Picture& to, uint32_t to_x) {
  for (uint32_t y = 0; y < to.height; ++y) {
    for (uint32_t x = 0; x < kDetailWidth * kEnlargement; ++x) {
      std::memcpy(to.At(to_x + x, y), from.At(corner.x + x / kEnlargement, corner.y + y / kEnlargement), 3);
    }
  }
}

Picture SideBySide(const Picture& left, const Picture& right, Point corner) {
  constexpr uint32_t kGap = 8;
  Picture both = MakePicture(2 * kDetailWidth * kEnlargement + kGap, kDetailHeight * kEnlargement, 3);
  Enlarge(left, corner, both, 0);
  Enlarge(right, corner, both, kDetailWidth * kEnlargement + kGap);
  return both;
}

class Demo {
 public:
  // `input` is where the frame comes from, if from a file.
  Demo(const fs::path& folder, const fs::path& input, Frame frame, const Development& development)
      : folder_(folder),
        input_(input),
        frame_(std::move(frame)),
        developed_(frame_),
        gamma_(development.gamma) {
    DevelopFrame(developed_, development);
  }

  // Makes all files, or none of them. `scene` is what the frame shows, where that is known.
  void WriteFiles(const Picture* scene, Point detail) {
    StoreFrame();
    if (scene) Store("scene.png", *scene, "what the frame shows, with all colours at every pixel");
    StorePictures(detail);
    for (OutputFile& file : files_) file.Commit();
    std::cout << listing_.str();
  }

  void PrintTimings() const {
    std::cout << "\nBest of " << kRuns << " conversions to BGRA:\n";
    const bool bayer = frame_.format->kind == FormatClass::kBayer;
    const ThreadChoice pool = ThreadChoice::Parse("");
    pool.Prepare();
    for (const bool adaptive : {false, true}) {
      if (adaptive && !bayer) break;
      for (const ThreadChoice& threads : {ThreadChoice::Caller(), pool}) {
        Conversion conversion{{}, {}, threads};
        if (adaptive) conversion.demosaic = Demosaic::kAdaptive;
        PrintTiming(bayer ? adaptive ? "adaptive" : "bilinear" : "",
                    adaptive ? BayerFrameOf8Bits(frame_) : frame_, conversion);
      }
    }
  }

 private:
  static constexpr int kRuns = 7;

  Picture Developed(std::optional<Demosaic> demosaic) const {
    const Conversion conversion{demosaic, {}, ThreadChoice::Caller()};
    Picture picture = Convert(developed_, conversion, IsGrey(developed_, conversion) ? 1 : 3);
    ApplyGamma(picture, gamma_);
    return picture;
  }

  void StoreFrame() {
    const fs::path path = folder_ / "frame.rwh";
    std::error_code ignored;
    // The input may be the copy that an earlier run made.
    if (!fs::equivalent(input_, path, ignored)) WriteFrame(frame_, FileKind::kRwh, files_.emplace_back(path));
    List(path, Text("the raw frame: ", frame_.format->name, " ", frame_.width, "x", frame_.height));
  }

  void StorePictures(Point detail) {
    const bool bayer = frame_.format->kind == FormatClass::kBayer;
    if (!bayer) {
      Store("picture.png", Developed({}), "the frame, converted");
      return;
    }
    Store("mosaic.png", Convert(frame_, {Demosaic::kNone, {}, ThreadChoice::Caller()}, 1),
          "the samples as they are");
    Store("linear.png", Convert(frame_, {}, 3),
          "demosaiced and nothing else: linear light, no white balance");
    const Picture bilinear = Developed(Demosaic::kBilinear), adaptive = Developed(Demosaic::kAdaptive);
    Store("bilinear.png", bilinear, "for a screen, bilinear demosaic");
    Store("adaptive.png", adaptive, "for a screen, adaptive demosaic");
    if (kHasPng) Store("bilinear.bmp", bilinear, "the same by the library's BMP writer");
    Store("bilinear.jpg", bilinear, "the same by the library's JPEG writer");
    if (frame_.width >= kDetailWidth && frame_.height >= kDetailHeight) {
      Store("detail.png", SideBySide(bilinear, adaptive, detail), "a detail, bilinear beside adaptive");
    }
  }

  void Store(const std::string& name, const Picture& picture, const std::string& description) {
    fs::path path = folder_ / name;
    if (!kHasPng && path.extension() == ".png") path.replace_extension(".bmp");
    WritePicture(picture, KindOfOutput(path, ""), kDefaultJpegQuality, files_.emplace_back(path));
    List(path, description);
  }

  void List(const fs::path& path, const std::string& description) {
    listing_ << std::left << std::setw(36) << path.string() << "  " << description << '\n';
  }

  static void PrintTiming(const char* name, const Frame& frame, const Conversion& conversion) {
    Picture picture = PictureFor(frame, conversion, 4);
    double best = 0;
    for (int run = 0; run < kRuns; ++run) {
      const auto start = std::chrono::steady_clock::now();
      ConvertInto(picture, frame, conversion);
      const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
      best = run == 0 ? time.count() : std::min(best, time.count());
    }
    const double pixels = static_cast<double>(frame.width) * frame.height;
    std::cout << std::left << std::setw(12) << frame.format->name << std::setw(10) << name << std::setw(24)
              << conversion.threads.Description(frame.height) << std::right << std::fixed
              << std::setprecision(2) << std::setw(9) << best << " ms" << std::setw(9) << std::setprecision(0)
              << pixels / best / 1000 << " Mpixel/s\n";
  }

  fs::path folder_;
  fs::path input_;
  Frame frame_;
  Frame developed_;
  double gamma_;
  std::deque<OutputFile> files_;
  std::ostringstream listing_;
};

void RunDemo(DemoOptions options) {
  const bool own_scene = options.input.empty();
  std::optional<Scene> scene;
  if (own_scene) scene = RenderScene();
  Frame frame = own_scene ? scene->frame : ReadFrame(options.input, options.dump.Layout());
  if (own_scene) options.development.black = kSceneBlackLevel;
  if (frame.format->kind == FormatClass::kBayer) {
    options.development.gain = ParseGain(options.gain);
  } else {
    options.development.gamma = 1;  // only Bayer frames are sure to be linear
  }
  CheckConvertible(frame);
  if (!own_scene) ProtectInputs({options.input});

  // The middle of the star, or of any other frame.
  const Point middle = own_scene ? Point{260, 700} : Point{frame.width / 2, frame.height / 2};
  const Point detail{middle.x - std::min(middle.x, kDetailWidth / 2),
                     middle.y - std::min(middle.y, kDetailHeight / 2)};
  const OutputFolder folder(options.folder);
  Demo demo(options.folder, options.input, std::move(frame), options.development);
  demo.WriteFiles(own_scene ? &scene->picture : nullptr, detail);
  demo.PrintTimings();
}

}  // namespace

void AddDemoCommand(CLI::App& app) {
  auto options = std::make_shared<DemoOptions>();
  CLI::App* command =
      app.add_subcommand("demo",
                         "Convert a frame in several ways, with pictures and timings; without FILE, a test "
                         "scene that is rendered as a camera would see it");
  CLI::Option* file = command->add_option("FILE", options->input, "A raw frame file, or a headerless dump");
  options->dump.AddTo(*command);
  for (const char* about_file : {"--size", "--format"}) command->get_option(about_file)->needs(file);
  command->add_option("-o,--output", options->folder, "Folder for the pictures (default: demo-output)");
  command->add_option("--shift", options->development.shift, "Shift every raw sample right by this many bits")
      ->check(CLI::Range(0, 8));
  command->add_option("--black", options->development.black, "Black level of FILE")
      ->check(CLI::Range(0, 65535))
      ->needs(file);
  command->add_option("--gain", options->gain, "Factors R,G,B for raw samples (default: auto)");
  AddGammaOption(*command, options->development.gamma, "Gamma of the pictures (default: 2.2)");
  command->callback([options] { RunDemo(*options); });
}

}  // namespace prismo::tool

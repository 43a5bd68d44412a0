#include "conversions.h"

#include <algorithm>
#include <array>
#include <utility>

#include "PrismoUtl.h"
#include "files.h"

namespace prismo::bench {
namespace {

using reference::PackedFrame;
using reference::Phase;
using reference::YuvLayout;

constexpr Target kBgra{"BGRA", PRISMO_BGRA8};
constexpr Target kBgr{"BGR", PRISMO_BGR8};
constexpr Target kPad{"Pad", PRISMO_BGR8, true};
constexpr Target kPlanes{"planes", PRISMO_BGR8};

struct Source {
  std::string name;
  uint32_t format;
};

std::vector<Target> TargetsOf(bool bgra) {
  return bgra ? std::vector<Target>{kBgra} : std::vector<Target>{kBgr, kPad};
}

class Table {
 public:
  std::vector<Conversion> Build() && {
    // One phase stands for the four, and one order of channels is never the other one's twin.
    for (const auto& routine : test::MonoRoutines()) {
      for (const uint32_t depth :
           routine.words ? std::vector<uint32_t>{10, 12, 16} : std::vector<uint32_t>{8}) {
        AddRoutine("mono", routine,
                   {"Mono" + std::to_string(depth), GetPxlFmt(0, static_cast<int32_t>(depth))});
      }
    }
    AddBayer("bilinear", test::BilinearRoutines());
    AddBayer("adaptive", test::AdaptiveRoutines());
    AddRectangles();
    AddPlanes();
    for (const auto& routine : test::PackedRoutines()) AddPacked(routine);
    for (const auto& routine : test::YuvRoutines()) AddYuv(routine);
    AddReductions();
    AddMirrors();
    AddSynthesis();
    AddFiles();
    AddEmptyCall();
    AddRecording();
    return std::move(conversions_);
  }

 private:
  Conversion& Add(std::string name, On on, uint32_t source_format, Target target,
                  std::function<uint32_t(const Job&)> run) {
    return conversions_.emplace_back(Conversion{std::move(name), on, source_format, target, std::move(run)});
  }

  // The depth of the source gives the shift of a routine for words.
  template <class Routine>
  void AddRoutine(const std::string& family, const Routine& routine, const Source& source) {
    const auto shift = static_cast<uint8_t>(DataDepth(source.format) - 8);
    for (const Target& target : TargetsOf(routine.bgra)) {
      // Widths that four pixels divide need no padding.
      if (target.padded && source.format == PRISMO_YUV411) continue;
      Add(family + '/' + source.name + '/' + target.name, routine.on, source.format, target,
          [call = routine.call, shift, pad = target.padded](const Job& job) {
            return call(job.target, job.source, job.size.width, job.size.height, shift, pad);
          });
    }
  }

  void AddBayer(const char* family, const std::vector<test::BayerRoutine>& routines) {
    for (const test::BayerRoutine& routine : routines) {
      if (routine.source != Phase::kRg) continue;
      for (const int32_t depth : routine.words ? std::vector<int32_t>{10, 12} : std::vector<int32_t>{8}) {
        constexpr uint32_t kBayerRg = 99;
        AddRoutine(family, routine, {"RG" + std::to_string(depth), GetPxlFmt(kBayerRg, depth)});
      }
    }
  }

  // All of a frame that a rectangle may cover.
  void AddRectangles() {
    for (const On on : {On::kCaller, On::kPool}) {
      Add("rectangle/RG8/BGRA", on, PRISMO_BAYER_RG8, kBgra, [pool = on == On::kPool](const Job& job) {
        const auto [width, height] = job.size;
        return ConvRG8RectToBGRA_ACPI(job.target, job.source, width, height, 2, 2, width - 4, height - 4,
                                      width, height, 2, 2, pool);
      });
      for (const Target& target : {kBgr, kPad}) {
        Add(std::string("rectangle/RG8/") + target.name, on, PRISMO_BAYER_RG8, target,
            [pool = on == On::kPool, pad = target.padded](const Job& job) {
              const auto [width, height] = job.size;
              return ConvRG8RectToBGR_ACPI(job.target, job.source, width, height, 2, 2, width - 4, height - 4,
                                           width, height, 2, 2, pad, pool);
            });
      }
    }
  }

  void AddPlanes() {
    const Source sources[] = {{"RG8", PRISMO_BAYER_RG8}, {"RGB8", PRISMO_RGB8}, {"BGR8", PRISMO_BGR8}};
    for (const Source& source : sources) {
      for (const On on : {On::kCaller, On::kPool}) {
        Add("planes/" + source.name + "/planes", on, source.format, kPlanes,
            [format = source.format, pool = on == On::kPool](const Job& job) {
              uint8_t* const b = job.target;
              uint8_t* const g = b + job.size.Pixels();
              uint8_t* const r = g + job.size.Pixels();
              return ConvImagePlanarEx(format, b, g, r, job.source, job.size.width, job.size.height, pool, 0);
            });
      }
    }
  }

  void AddPacked(const test::PackedRoutine& routine) {
    if (routine.source == PackedFrame::Order::kBgra) {
      AddRoutine("packed", routine, {"BGRA8", PRISMO_BGRA8});
      return;
    }
    const bool rgb = routine.source == PackedFrame::Order::kRgb;
    for (const int32_t depth : routine.words ? std::vector<int32_t>{10, 12} : std::vector<int32_t>{8}) {
      constexpr uint32_t kRgb = 34;
      constexpr uint32_t kBgrOrder = 42;
      AddRoutine(
          "packed", routine,
          {(rgb ? "RGB" : "BGR") + std::to_string(depth), GetPxlFmt(rgb ? kRgb : kBgrOrder, 3 * depth)});
    }
  }

  void AddYuv(const test::YuvRoutine& routine) {
    switch (routine.source) {
      case YuvLayout::k411:
        return AddRoutine("yuv", routine, {"YUV411", PRISMO_YUV411});
      case YuvLayout::k422:
        return AddRoutine("yuv", routine, {"YUV422", PRISMO_YUV422});
      case YuvLayout::k444:
        return AddRoutine("yuv", routine, {"YUV444", PRISMO_YUV444});
    }
  }

  void AddReductions() {
    const Source sources[] = {
        {"Mono10", PRISMO_MONO10}, {"Mono12", PRISMO_MONO12}, {"Mono16", PRISMO_MONO16}};
    for (const Source& source : sources) {
      Add("reduce/" + source.name + "/Mono8", On::kCaller, source.format, {"Mono8", PRISMO_MONO8},
          [format = source.format](const Job& job) {
            return MonoNToMono8(job.target, job.source, format, static_cast<int32_t>(job.size.width),
                                static_cast<int32_t>(job.size.height), 0);
          });
    }
  }

  // A format for each unit of 1, 2, 3, 4 and 6 bytes that a mirror moves; those of YUV exchange their lumas.
  void AddMirrors() {
    const Source sources[] = {{"Mono8", PRISMO_MONO8}, {"Mono12", PRISMO_MONO12},
                              {"RGB8", PRISMO_RGB8},   {"YUV422", PRISMO_YUV422},
                              {"RGB12", PRISMO_RGB12}, {"YUV411", PRISMO_YUV411}};
    constexpr struct {
      const char* name;
      uint8_t horizontal, vertical;
    } kDirections[] = {{"left-right", 1, 0}, {"top-bottom", 0, 1}, {"both", 1, 1}};
    for (const Source& source : sources) {
      for (const auto& direction : kDirections) {
        for (const On on : {On::kCaller, On::kPool}) {
          Add("mirror/" + source.name + '/' + direction.name, on, source.format,
              {direction.name, source.format},
              [mirror = on == On::kPool ? RvrsImg_MP : RvrsImg_SP, format = source.format,
               direction](const Job& job) {
                return mirror(job.target, job.source, format, job.size.width, job.size.height,
                              direction.horizontal, direction.vertical);
              });
        }
      }
    }
  }

  void AddSynthesis() {
    constexpr Target kRawTargets[] = {
        {"Mono8", PRISMO_MONO8},   {"Mono10", PRISMO_MONO10}, {"Mono12", PRISMO_MONO12},
        {"RGB8", PRISMO_RGB8},     {"RGB10", PRISMO_RGB10},   {"RGB12", PRISMO_RGB12},
        {"BGR8", PRISMO_BGR8},     {"BGR10", PRISMO_BGR10},   {"BGR12", PRISMO_BGR12},
        {"YUV411", PRISMO_YUV411}, {"YUV422", PRISMO_YUV422}, {"YUV444", PRISMO_YUV444}};
    const Source sources[] = {{"BGR8", PRISMO_BGR8}, {"BGRA8", PRISMO_BGRA8}};
    for (const Source& source : sources) {
      for (const Target& target : kRawTargets) {
        Add("raw/" + source.name + '/' + target.name, On::kCaller, source.format, target,
            [to = target.format, from = source.format](const Job& job) {
              return ToRaw(job.target, job.source, to, from, job.size.width, job.size.height, 0);
            });
      }
    }
    AddMosaics({"BGR8", PRISMO_BGR8}, 3, {ToBayer8to8, ToBayer8to10, ToBayer8to12});
    AddMosaics({"BGRA8", PRISMO_BGRA8}, 4, {ToBayer8to8, ToBayer8to10, ToBayer8to12});
    AddMosaics({"BGR10", PRISMO_BGR10}, 3, {ToBayer10to8, ToBayer10to10, ToBayer10to12});
  }

  // To 8, 10 and 12 bits.
  void AddMosaics(const Source& source, int32_t channels, std::array<decltype(&ToBayer8to8), 3> mosaics) {
    constexpr Target kTargets[] = {
        {"RG8", PRISMO_BAYER_RG8}, {"RG10", PRISMO_BAYER_RG10}, {"RG12", PRISMO_BAYER_RG12}};
    for (size_t i = 0; i < mosaics.size(); ++i) {
      Add("bayer/" + source.name + '/' + kTargets[i].name, On::kCaller, source.format, kTargets[i],
          [mosaic = mosaics[i], channels](const Job& job) {
            constexpr int32_t kRedGreenGreenBlue[] = {2, 1, 1, 0};
            return mosaic(job.target, job.source, kRedGreenGreenBlue, static_cast<int32_t>(job.size.width),
                          job.size.height, channels, 0);
          });
    }
  }

  void AddFiles() {
    WritesAsPlainly(AddFile("file/BGRA8/bmp", PRISMO_BGRA8, [](const Job& job) {
      return SaveBmpARGB(job.source, job.size.width, job.size.height, job.path.c_str());
    }));
    WritesAsPlainly(AddFile("file/BGR8/bmp", PRISMO_BGR8, [](const Job& job) {
      return SaveBmpRGB(job.source, job.size.width, job.size.height, job.path.c_str());
    }));
    WritesAsPlainly(AddFile("file/Mono8/bmp", PRISMO_MONO8, [](const Job& job) {
      return SaveBmpMono(job.source, job.size.width, job.size.height, job.path.c_str());
    }));
    WritesAsPlainly(AddFile("file/RG8/raw", PRISMO_BAYER_RG8, SaveRaw));
    AddLoad();
    AddJpeg("file/BGRA8/jpeg90", PRISMO_BGRA8, 0);
    AddJpeg("file/BGR8/jpeg90", PRISMO_BGR8, 1);
    AddFile("file/RG8/jpeg90", PRISMO_BAYER_RG8, [](const Job& job) {
      return SaveJpegRQ(job.source, PRISMO_BAYER_RG8, kJpegQuality, job.size.width, job.size.height,
                        job.path.c_str());
    });
  }

  Conversion& AddFile(const char* name, uint32_t format, std::function<uint32_t(const Job&)> save) {
    Conversion& file = Add(name, On::kCaller, format, {"file", 0}, std::move(save));
    file.writes_file = true;
    return file;
  }

  static void WritesAsPlainly(Conversion& file) {
    file.floor_name = "write";
    file.floor = WritePlainly;
  }

  void AddJpeg(const char* name, uint32_t format, uint32_t layout) {
    AddFile(name, format, [layout](const Job& job) {
      return SaveJpegQ(job.source, layout, kJpegQuality, job.size.width, job.size.height, job.path.c_str());
    });
  }

  static uint32_t SaveRaw(const Job& job) {
    return SaveRWH(job.source, PRISMO_BAYER_RG8, job.size.width, job.size.height, job.path.c_str());
  }

  void AddLoad() {
    Conversion& load =
        Add("file/raw/RG8", On::kCaller, PRISMO_BAYER_RG8, {"RG8", PRISMO_BAYER_RG8}, [](const Job& job) {
          uint8_t* target = job.target;
          return LoadRWH(job.path.c_str(), &target, nullptr, nullptr, nullptr, nullptr);
        });
    load.prepare = SaveRaw;
    load.floor_name = "read";
    load.floor = ReadPlainly;
  }

  // What a call costs whose rows cost nothing: to threads that are awake, and to threads asleep.
  void AddEmptyCall() {
    AddEmptyCall("engine/rows/none");
    AddEmptyCall("engine/rows/none-rested").rested = true;
  }

  Conversion& AddEmptyCall(const char* name) {
    return Add(name, On::kPool, 0, {"none", 0}, [](const Job& job) {
      const auto take_all = [](MPWork* work) {
        int32_t first_row = 0;
        int32_t rows = 0;
        for (int32_t first = 1; MPWorkTakeBlock(work, first, &first_row, &rows); first = 0) {
        }
      };
      constexpr uint32_t kShrinkingEvenBlocks = 2;
      return ExecWork1(take_all, 0, job.size.height - 1, job.source, job.size.width, job.size.height, 1, 0,
                       job.target, 1, 0, 0, 0, kShrinkingEvenBlocks);
    });
  }

  // A conversion that records all that it does, beside one that records nothing.
  void AddRecording() {
    Conversion& logged = Add("engine/RG8/BGRA-logged", On::kPool, PRISMO_BAYER_RG8, {"BGRA", PRISMO_BGRA8},
                             [](const Job& job) { return ConvertAtLogLevel(kLogDebug, job); });
    logged.floor_name = "unlogged";
    logged.floor = [](const Job& job) { ConvertAtLogLevel(kLogFatal, job); };
  }

  static constexpr uint32_t kLogDebug = 0, kLogFatal = 4;

  static uint32_t ConvertAtLogLevel(uint32_t level, const Job& job) {
    SetMPLogLevel(level);
    return ByrRG8ToBGRA_MP(job.target, job.source, job.size.width, job.size.height);
  }

  std::vector<Conversion> conversions_;
};

}  // namespace

Size Conversion::SizeFor(Size asked) const {
  const bool unpadded = RowBytes(target.format, asked.width) % 4 == 0;
  return target.padded && unpadded ? Size{asked.width - 2, asked.height} : asked;
}

size_t Conversion::SourceBytes(Size size) const { return RowBytes(source_format, size.width) * size.height; }

size_t Conversion::TargetPitch(Size size) const {
  const size_t bytes = RowBytes(target.format, size.width);
  return target.padded ? (bytes + 3) / 4 * 4 : bytes;
}

const std::vector<Conversion>& Conversions() {
  static const std::vector<Conversion> conversions = Table().Build();
  return conversions;
}

const Conversion* CallerFormOf(const Conversion& conversion) {
  const auto& all = Conversions();
  const auto found = std::ranges::find_if(
      all, [&](const Conversion& other) { return other.on == On::kCaller && other.name == conversion.name; });
  return found == all.end() ? nullptr : &*found;
}

}  // namespace prismo::bench

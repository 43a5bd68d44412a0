#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <thread>

#include "PrismoUtl.h"
#include "commands.h"
#include "error.h"
#include "file_jobs.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

struct MosaicOptions {
  FileJobs files;
  std::string format;
};

Picture Cropped(const Picture& picture, uint32_t width, uint32_t height) {
  Picture cropped = MakePicture(width, height, picture.channels);
  for (uint32_t y = 0; y < height; ++y) {
    std::memcpy(cropped.At(0, y), picture.At(0, y), size_t{width} * picture.channels);
  }
  return cropped;
}

using ToBayerRoutine = decltype(&ToBayer8to8);

ToBayerRoutine RoutineForDepth(unsigned depth) {
  return depth == 8 ? ToBayer8to8 : depth == 10 ? ToBayer8to10 : ToBayer8to12;
}

// The index of a channel in a B, G, R pixel.
int32_t BgrIndex(Channel channel) { return 2 - channel; }

uint32_t MakeBayer(Frame& frame, const Picture& photo) {
  const RowPattern upper = PatternOfRow(*frame.format, 0), lower = PatternOfRow(*frame.format, 1);
  // The library takes the sites of a tile column by column.
  const std::array<int32_t, 4> sites{BgrIndex(upper.channels[0]), BgrIndex(lower.channels[0]),
                                     BgrIndex(upper.channels[1]), BgrIndex(lower.channels[1])};
  return RoutineForDepth(SampleDepth(*frame.format))(frame.bytes.data(), photo.bytes.data(), sites.data(),
                                                     static_cast<int32_t>(photo.width), photo.height, 3, 0);
}

uint32_t MakePaddedMono(Frame& frame, const Picture& photo) {
  std::vector<uint8_t> packed(size_t{photo.width} * photo.height);
  const uint32_t status =
      ToRaw(packed.data(), photo.bytes.data(), PRISMO_MONO8, PRISMO_BGR8, photo.width, photo.height, 0);
  const size_t pitch = RowBytes(*frame.format, photo.width);
  for (size_t y = 0; y < photo.height; ++y) {
    std::memcpy(&frame.bytes[y * pitch], &packed[y * photo.width], photo.width);
  }
  return status;
}

Frame MakeFrame(const Picture& photo, const Format& format) {
  Frame frame{&format, photo.width, photo.height,
              std::vector<uint8_t>(RowBytes(format, photo.width) * photo.height)};
  uint8_t* to = frame.bytes.data();
  const uint8_t* from = photo.bytes.data();
  uint32_t status = 0;
  if (format.kind == FormatClass::kBayer) {
    status = MakeBayer(frame, photo);
  } else if (format.code == PRISMO_MONO8_PADDED) {
    status = MakePaddedMono(frame, photo);
  } else if (format.code == PRISMO_BGR8_PADDED) {
    status = BGR8PToBGR_SP(to, from, photo.width, photo.height, 1);
  } else if (format.code == PRISMO_BGRA8) {
    status = BGR8PToBGRA_SP(to, from, photo.width, photo.height);
  } else {
    status = ToRaw(to, from, format.code, PRISMO_BGR8, photo.width, photo.height, 0);
  }
  Check(status, Text("making a ", format.name, " frame"));
  return frame;
}

void RunMosaic(const MosaicOptions& options) {
  const Format& format = FormatByName(options.format);
  if (format.code == PRISMO_BGRA10) throw Error("BGRA10 frames cannot be made");
  const int parallel = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  options.files.Run(
      FileKind::kRwh, parallel, [&](const fs::path& input, const fs::path& output, FileKind kind) {
        if (!HoldsFrame(kind)) throw FileError(output, "a camera frame goes to a .rwh or .raw file");
        const Picture photo = WithColourChannels(ReadPicture(input));
        const uint32_t width = photo.width / WidthUnit(format) * WidthUnit(format);
        const uint32_t height = photo.height / HeightUnit(format) * HeightUnit(format);
        if (width == 0 || height == 0) {
          throw FileError(input, photo.width, "x", photo.height, " is too small for ", format.name);
        }
        const bool whole = width == photo.width && height == photo.height;
        WriteFrame(MakeFrame(whole ? photo : Cropped(photo, width, height), format), kind, output);
        return Text(output.string(), ": ", format.name, " ", width, "x", height,
                    whole ? "" : Text(", cropped from ", photo.width, "x", photo.height));
      });
}

}  // namespace

void AddMosaicCommand(CLI::App& app) {
  auto options = std::make_shared<MosaicOptions>();
  CLI::App* command = app.add_subcommand("mosaic", "Make camera frames of photographs");
  command->add_option("PHOTO", options->files.inputs, "PNG or BMP files")->required();
  command->add_option("-o,--output", options->files.output, "A .rwh or .raw file, or a folder")->required();
  command->add_option("--as", options->files.kind_name, "rwh or raw, where no extension says it");
  command->add_option("--format", options->format, "Pixel format of the frames, for example BayerRG12")
      ->required();
  command->callback([options] { RunMosaic(*options); });
}

}  // namespace prismo::tool

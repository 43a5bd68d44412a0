#include <CLI/CLI.hpp>
#include <memory>

#include "PrismoUtl.h"
#include "commands.h"
#include "conversion.h"
#include "error.h"
#include "file_jobs.h"
#include "options.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

struct MirrorOptions {
  FileJobs files;
  DumpOptions dump;
  bool horizontal = false;
  bool vertical = false;
  std::string threads;
};

bool HasMirror(const Format& format) {
  return !HasPaddedRows(format) && format.code != PRISMO_BGRA8 && format.code != PRISMO_BGRA10;
}

// Mirroring an even side brings the other colour to the corner.
const Format& MirroredFormat(const Frame& frame, bool horizontal, bool vertical) {
  if (frame.format->kind != FormatClass::kBayer) return *frame.format;
  return BayerFormatShifted(*frame.format, horizontal && frame.width % 2 == 0,
                            vertical && frame.height % 2 == 0);
}

Frame Mirrored(const Frame& frame, const MirrorOptions& options, const ThreadChoice& threads) {
  if (!HasMirror(*frame.format)) throw Error("there is no mirror for ", frame.format->name, " frames");
  if (frame.format->kind == FormatClass::kYuv && frame.width % WidthUnit(*frame.format)) {
    throw Error(frame.format->name, " frames have a width that is a multiple of ", WidthUnit(*frame.format));
  }
  Frame mirrored{&MirroredFormat(frame, options.horizontal, options.vertical), frame.width, frame.height,
                 std::vector<uint8_t>(frame.bytes.size())};
  const auto mirror = threads.UsesPoolFor(frame.height) ? RvrsImg_MP : RvrsImg_SP;
  Check(mirror(mirrored.bytes.data(), frame.bytes.data(), frame.format->code, frame.width, frame.height,
               options.horizontal, options.vertical),
        Text("mirroring ", frame.format->name));
  return mirrored;
}

void RunMirror(const MirrorOptions& options) {
  if (!options.horizontal && !options.vertical) throw Error("mirror needs --horizontal, --vertical or both");
  const DumpLayout layout = options.dump.Layout();
  const ThreadChoice choice = ThreadChoice::Parse(options.threads);
  const ThreadChoice threads = options.files.ToFolder() ? ThreadChoice::Caller() : choice;
  threads.Prepare();
  options.files.Run(FileKind::kRwh, std::max(1, choice.count()),
                    [&](const fs::path& input, const fs::path& output, FileKind kind) {
                      if (!HoldsFrame(kind)) {
                        throw FileError(output, "a mirrored frame goes to a .rwh or .raw file");
                      }
                      const Frame frame = ReadFrame(input, layout);
                      const Frame mirrored = Mirrored(frame, options, threads);
                      WriteFrame(mirrored, kind, output);
                      return Text(output.string(), ": ", mirrored.format->name, " ", mirrored.width, "x",
                                  mirrored.height,
                                  mirrored.format == frame.format ? "" : Text(", was ", frame.format->name));
                    });
}

}  // namespace

void AddMirrorCommand(CLI::App& app) {
  auto options = std::make_shared<MirrorOptions>();
  CLI::App* command =
      app.add_subcommand("mirror", "Mirror raw frames; Bayer frames change their phase accordingly");
  command->add_option("INPUT", options->files.inputs, "Raw frame files (.rwh) or headerless dumps")
      ->required();
  command->add_option("-o,--output", options->files.output, "A .rwh or .raw file, or a folder")->required();
  command->add_option("--as", options->files.kind_name, "rwh or raw, where no extension says it");
  options->dump.AddTo(*command);
  command->add_flag("--horizontal", options->horizontal, "Left becomes right");
  command->add_flag("--vertical", options->vertical, "Top becomes bottom");
  command->add_option("--threads", options->threads,
                      "'caller', or the number of threads (default: the processors)");
  command->callback([options] { RunMirror(*options); });
}

}  // namespace prismo::tool

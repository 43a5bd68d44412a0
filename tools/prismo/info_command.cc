#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <memory>

#include "commands.h"
#include "develop.h"
#include "options.h"

namespace prismo::tool {
namespace {

struct InfoOptions {
  std::string input;
  DumpOptions dump;
};

void PrintStatistics(const Frame& frame) {
  const auto statistics = StatisticsOf(frame);
  const bool grey = frame.format->kind == FormatClass::kMono;
  constexpr std::array names{"red", "green", "blue"};
  for (const Channel channel : {kRed, kGreen, kBlue}) {
    const ChannelStatistics& s = statistics[channel];
    if (s.count == 0) continue;
    std::cout << std::left << std::setw(9) << (grey ? "samples" : names[channel]) << s.min << " to " << s.max
              << ", mean " << std::fixed << std::setprecision(1) << s.sum / static_cast<double>(s.count)
              << ", " << s.clipped << " of " << s.count << " at " << MaxSample(*frame.format)
              << " or above\n";
  }
}

void PrintInfo(const InfoOptions& options) {
  const DumpLayout layout = options.dump.Layout();
  const FrameHeader header = ExamineFrame(options.input, layout);
  const Frame frame = ReadFrame(options.input, layout);
  std::cout << "file     " << options.input << (header.data_offset ? "" : " (headerless)") << '\n'
            << "format   " << frame.format->name << " (" << ClassName(frame.format->kind) << ", "
            << SampleDepth(*frame.format) << " bits)\n"
            << "size     " << frame.width << "x" << frame.height << '\n'
            << "row      " << RowBytes(*frame.format, frame.width) << " bytes\n"
            << "data     " << header.DataBytes() << " bytes at " << header.data_offset << '\n';
  if (frame.format->kind != FormatClass::kYuv) PrintStatistics(frame);
}

}  // namespace

void AddInfoCommand(CLI::App& app) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command = app.add_subcommand("info", "Describe a raw frame");
  command->add_option("FILE", options->input, "A raw frame file, or a headerless dump")->required();
  options->dump.AddTo(*command);
  command->callback([options] { PrintInfo(*options); });
}

}  // namespace prismo::tool

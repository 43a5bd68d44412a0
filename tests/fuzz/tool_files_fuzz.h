// One reading of arbitrary bytes by the prismo command: as a raw frame file, as a headerless dump whose
// layout the bytes choose too, or as a saved log whose story is told. The first byte says which.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>
#include <sstream>
#include <string>

#include "conversion.h"
#include "develop.h"
#include "error.h"
#include "log_story.h"
#include "mp/log_text.h"
#include "raw_input.h"
#include "support/temp_folder.h"

namespace prismo::test {

// What the file holds behind its header is what comes in; what comes in can be developed and converted.
inline void FuzzToolFrame(std::span<const uint8_t> file, const std::string& path,
                          const tool::DumpLayout& layout) try {
  WriteFile(path, Bytes(file.begin(), file.end()));
  const tool::FrameHeader header = tool::ExamineFrame(path, layout);
  if (header.data_offset + header.DataBytes() != file.size()) std::abort();
  tool::Frame frame = tool::ReadFrame(path, layout);
  if (!std::ranges::equal(frame.bytes, file.subspan(header.data_offset))) std::abort();
  if (frame.width != header.width || frame.height != header.height) std::abort();

  tool::StatisticsOf(frame);
  tool::DevelopFrame(frame, {.shift = 1, .black = 3, .gain = tool::Gain{.automatic = true}});
  for (const auto demosaic : {tool::Demosaic::kBilinear, tool::Demosaic::kAdaptive, tool::Demosaic::kNone}) {
    tool::Conversion conversion;
    conversion.demosaic = demosaic;
    const tool::Picture picture = tool::Convert(frame, conversion, tool::IsGrey(frame, conversion) ? 1 : 3);
    if (picture.width != frame.width || picture.height != frame.height) std::abort();
  }
} catch (const tool::Error&) {
}

inline void FuzzToolLog(std::span<const uint8_t> file) {
  std::istringstream log(std::string(file.begin(), file.end()));
  std::stringstream text;
  mp::RenderLog(log, text, 0);
  const tool::LogStory story = tool::ReadStory(text);
  std::ostringstream told, traced;
  tool::Explain(story, told);
  tool::WriteTrace(story, traced);
}

inline void FuzzToolFiles(const uint8_t* data, size_t size) {
  static const TempFolder folder;
  static const std::string frame = folder / "frame.rwh", dump = folder / "frame.raw";
  const std::span<const uint8_t> bytes(data, size);
  if (bytes.size() < 4) return;
  const auto formats = tool::AllFormats();
  const tool::DumpLayout layout{tool::Size{bytes[2], bytes[3]}, &formats[bytes[1] % formats.size()]};
  switch (bytes[0] % 4) {
    case 0:
      return FuzzToolFrame(bytes.subspan(1), frame, {});
    case 1:
      return FuzzToolFrame(bytes.subspan(4), frame, layout);  // which the header has to agree with
    case 2:
      return FuzzToolFrame(bytes.subspan(4), dump, layout);
    default:
      return FuzzToolLog(bytes.subspan(1));
  }
}

}  // namespace prismo::test

// Reading camera frames: raw frame files with a header, and headerless dumps.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "frame.h"

namespace prismo::tool {

struct Size {
  uint32_t width;
  uint32_t height;
};

// "1920x1076"
Size ParseSize(const std::string& text);

// What a user says about a headerless dump.
struct DumpLayout {
  std::optional<Size> size;
  const Format* format = nullptr;
};

struct FrameHeader {
  const Format* format;
  uint32_t width;
  uint32_t height;
  uint64_t data_offset;

  uint64_t DataBytes() const { return RowBytes(*format, width) * height; }
};

// Finds out what a file holds and proves that it holds all of it. A .rwh file describes itself; any other
// file is a dump when a layout is given.
FrameHeader ExamineFrame(const std::filesystem::path& path, const DumpLayout& layout);

Frame ReadFrame(const std::filesystem::path& path, const DumpLayout& layout);

// The length of a readable regular file; throws for anything else.
uint64_t LengthOfFile(const std::filesystem::path& path);

}  // namespace prismo::tool

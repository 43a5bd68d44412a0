#include "raw_input.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>

#include "PrismoUtl.h"
#include "error.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kRwhHeaderBytes = 16;

std::ifstream OpenForReading(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw FileError(path, "cannot be opened: ", std::strerror(errno));
  return file;
}

uint32_t LittleEndian32(const unsigned char* bytes) {
  return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

std::string Describe(const Format& format, uint64_t width, uint64_t height) {
  return Text(format.name, " ", width, "x", height);
}

void CheckSize(const fs::path& path, const FrameHeader& header) {
  const uint64_t pixels = uint64_t{header.width} * header.height;
  if (pixels == 0) throw FileError(path, "a frame of ", header.width, "x", header.height, " is empty");
  if (pixels > kMaxPixels) {
    throw FileError(path, "a frame of ", header.width, "x", header.height,
                    " is larger than the largest that is handled (", kMaxPixels, " pixels)");
  }
}

void CheckLength(const fs::path& path, const FrameHeader& header, uint64_t length) {
  const uint64_t expected = header.data_offset + header.DataBytes();
  if (length == expected) return;
  throw FileError(path, Describe(*header.format, header.width, header.height),
                  header.data_offset ? " behind a header takes " : " takes ", expected,
                  " bytes, but the file has ", length,
                  length < expected ? Text(" (", expected - length, " too few)")
                                    : Text(" (", length - expected, " too many)"),
                  header.data_offset ? "; write it again" : "; check --size and --format");
}

FrameHeader ExamineRwh(const fs::path& path, uint64_t length) {
  std::array<unsigned char, kRwhHeaderBytes> bytes{};
  if (length < bytes.size()) {
    throw FileError(path, "a raw frame file begins with ", bytes.size(), " header bytes, but the file has ",
                    length);
  }
  std::ifstream file = OpenForReading(path);
  if (!file.read(reinterpret_cast<char*>(bytes.data()), bytes.size())) {
    throw FileError(path, "reading failed");
  }
  const uint32_t code = LittleEndian32(&bytes[0]);
  const FrameHeader header{FormatByCode(code), LittleEndian32(&bytes[4]), LittleEndian32(&bytes[8]),
                           kRwhHeaderBytes};
  const uint32_t row_bytes = LittleEndian32(&bytes[12]);
  if (!header.format) {
    throw FileError(path, "the header names the unknown pixel format 0x", std::hex, code,
                    " (a headerless dump needs --size and --format)");
  }
  CheckSize(path, header);
  if (row_bytes != RowBytes(*header.format, header.width)) {
    throw FileError(path, "a row of ", Describe(*header.format, header.width, header.height), " has ",
                    RowBytes(*header.format, header.width), " bytes, but the header says ", row_bytes);
  }
  return header;
}

bool NamesRwh(const fs::path& path) { return path.extension() == ".rwh" || path.extension() == ".RWH"; }

}  // namespace

Size ParseSize(const std::string& text) {
  Size size{};
  const char* end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, size.width);
  if (width.ec == std::errc() && width.ptr != end && (*width.ptr == 'x' || *width.ptr == 'X')) {
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    if (height.ec == std::errc() && height.ptr == end) return size;
  }
  throw Error("a size is WIDTHxHEIGHT, for example 1920x1080, not '", text, "'");
}

uint64_t LengthOfFile(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) throw FileError(path, "no such file");
  if (fs::is_directory(status)) throw FileError(path, "is a folder");
  if (!fs::is_regular_file(status)) throw FileError(path, "is not a regular file");
  const uint64_t length = fs::file_size(path, error);
  if (error) throw FileError(path, error.message());
  return length;
}

FrameHeader ExamineFrame(const fs::path& path, const DumpLayout& layout) {
  const uint64_t length = LengthOfFile(path);
  const bool described = layout.size || layout.format;
  if (!NamesRwh(path) && described && !(layout.size && layout.format)) {
    throw FileError(path, "a headerless dump needs both --size and --format ('prismo probe' guesses them)");
  }
  FrameHeader header{};
  if (NamesRwh(path) || !described) {
    header = ExamineRwh(path, length);
    const bool agrees =
        (!layout.format || layout.format == header.format) &&
        (!layout.size || (layout.size->width == header.width && layout.size->height == header.height));
    if (!agrees) {
      throw FileError(path, "the header says ", Describe(*header.format, header.width, header.height),
                      ", which is not what the command line says");
    }
  } else {
    header = {layout.format, layout.size->width, layout.size->height, 0};
    CheckSize(path, header);
  }
  CheckLength(path, header, length);
  return header;
}

Frame ReadFrame(const fs::path& path, const DumpLayout& layout) {
  const FrameHeader header = ExamineFrame(path, layout);
  Frame frame{header.format, header.width, header.height, std::vector<uint8_t>(header.DataBytes())};
  // Not by LoadRWH, which does not tell when reading fails.
  std::ifstream file = OpenForReading(path);
  file.seekg(static_cast<std::streamoff>(header.data_offset));
  if (!file.read(reinterpret_cast<char*>(frame.bytes.data()),
                 static_cast<std::streamsize>(frame.bytes.size()))) {
    throw FileError(path, "reading failed");
  }
  return frame;
}

}  // namespace prismo::tool

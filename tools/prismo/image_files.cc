#include "image_files.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>
#include <tuple>

#include "PrismoUtl.h"
#include "bmp_file.h"
#include "error.h"
#include "png_file.h"
#include "raw_input.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kJpegLayoutBgr = 1;
constexpr uint32_t kJpegLayoutBgra = 0;
constexpr uint32_t kMaxJpegSide = 65500;  // the encoder's limit

struct KindName {
  std::string_view name;
  FileKind kind;
};
// The first name of a kind is its extension.
constexpr KindName kKinds[] = {
    {"bmp", FileKind::kBmp}, {"png", FileKind::kPng},   {"jpg", FileKind::kJpeg},  {"jpeg", FileKind::kJpeg},
    {"bgr", FileKind::kBgr}, {"bgra", FileKind::kBgra}, {"grey", FileKind::kGrey}, {"gray", FileKind::kGrey},
    {"rwh", FileKind::kRwh}, {"raw", FileKind::kRaw},
};

void WriteBytes(const std::vector<uint8_t>& bytes, const OutputFile& output) {
  std::ofstream file(output.scratch(), std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  output.RequireLength(bytes.size());
}

void WriteBmp(const Picture& picture, const OutputFile& file) {
  const auto [width, height, channels, bytes] =
      std::tie(picture.width, picture.height, picture.channels, picture.bytes);
  const std::string path = file.scratch();
  const auto check = [&](uint32_t status, uint64_t length) {
    CheckFile(status, file.name(), "writing");
    file.RequireLength(length);
  };
  switch (channels) {
    case 1:
      return check(SaveBmpMono(bytes.data(), width, height, path.c_str()),
                   54 + 1024 + (uint64_t{width} + 3) / 4 * 4 * height);
    case 3:
      // SaveBmpRGB pads rows of odd width in a way that other programs do not read; the stride form does not.
      return check(SaveBmpRGBStrm(bytes.data(), width, height, 3 * width, path.c_str()),
                   54 + (3 * uint64_t{width} + 3) / 4 * 4 * height);
    default:
      return check(SaveBmpARGB(bytes.data(), width, height, path.c_str()), 54 + 4 * uint64_t{width} * height);
  }
}

Picture WithOpacity(const Picture& bgr) {
  Picture bgra = MakePicture(bgr.width, bgr.height, 4);
  for (size_t i = 0; i < size_t{bgr.width} * bgr.height; ++i) {
    std::copy_n(&bgr.bytes[3 * i], 3, &bgra.bytes[4 * i]);
    bgra.bytes[4 * i + 3] = 255;
  }
  return bgra;
}

void WriteJpeg(const Picture& picture, unsigned quality, const OutputFile& file) {
  // Not every system's encoder takes rows that do not begin at multiples of 4 bytes.
  if (picture.channels == 3 && picture.width % 4 != 0) return WriteJpeg(WithOpacity(picture), quality, file);
  if (std::max(picture.width, picture.height) > kMaxJpegSide) {
    throw FileError(file.name(), "a JPEG file holds at most ", kMaxJpegSide, " pixels a side, not ",
                    picture.width, "x", picture.height);
  }
  const auto* bytes = picture.bytes.data();
  const std::string path = file.scratch();
  const uint32_t status =
      picture.channels == 1
          ? SaveJpegRQ(bytes, PRISMO_MONO8, quality, picture.width, picture.height, path.c_str())
          : SaveJpegQ(bytes, picture.channels == 3 ? kJpegLayoutBgr : kJpegLayoutBgra, quality, picture.width,
                      picture.height, path.c_str());
  CheckFile(status, file.name(), "writing");
}

}  // namespace

FileKind KindOfOutput(const fs::path& path, const std::string& kind_name) {
  std::string name = kind_name.empty() ? path.extension().string() : kind_name;
  if (name.starts_with('.')) name.erase(0, 1);
  std::ranges::transform(name, name.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const auto* found = std::ranges::find(kKinds, name, &KindName::name);
  if (found != std::end(kKinds)) return found->kind;
  std::string all;
  for (const KindName& kind : kKinds) all += Text(" ", kind.name);
  if (!kind_name.empty()) throw Error("unknown kind of output '", kind_name, "' (known:", all, ")");
  throw FileError(path, "the extension does not name a kind of output (known:", all, ")");
}

std::string ExtensionOf(FileKind kind) {
  return Text(".", std::ranges::find(kKinds, kind, &KindName::kind)->name);
}

void WritePicture(const Picture& picture, FileKind kind, unsigned jpeg_quality, const OutputFile& file) {
  switch (kind) {
    case FileKind::kBmp:
      return WriteBmp(picture, file);
    // These two encoders report a disk that is full themselves.
    case FileKind::kPng:
      return WritePng(picture, file.scratch(), file.name());
    case FileKind::kJpeg:
      return WriteJpeg(picture, jpeg_quality, file);
    default:
      WriteBytes(picture.bytes, file);
  }
}

void WriteFrame(const Frame& frame, FileKind kind, const OutputFile& file) {
  if (kind != FileKind::kRwh) return WriteBytes(frame.bytes, file);
  CheckFile(
      SaveRWH(frame.bytes.data(), frame.format->code, frame.width, frame.height, file.scratch().c_str()),
      file.name(), "writing");
  file.RequireLength(16 + frame.bytes.size());
}

void WriteFrame(const Frame& frame, FileKind kind, const fs::path& path) {
  OutputFile file(path);
  WriteFrame(frame, kind, file);
  file.Commit();
}

Picture ReadPicture(const fs::path& path) {
  LengthOfFile(path);
  std::ifstream file(path, std::ios::binary);
  if (!file) throw FileError(path, "cannot be opened: ", std::strerror(errno));
  std::array<char, 4> start{};
  file.read(start.data(), start.size());
  if (std::string_view(start.data(), 2) == "BM") return ReadBmp(path);
  if (std::string_view(start.data(), 4) == "\x89PNG") return ReadPng(path);
  throw FileError(path, "neither a BMP nor a PNG file");
}

Picture WithColourChannels(Picture picture) {
  if (picture.channels != 1) return picture;
  Picture colour = MakePicture(picture.width, picture.height, 3);
  for (size_t i = 0; i < picture.bytes.size(); ++i) std::fill_n(&colour.bytes[3 * i], 3, picture.bytes[i]);
  return colour;
}

}  // namespace prismo::tool

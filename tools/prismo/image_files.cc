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
constexpr uint32_t kMaxJpegSide = 65535;

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

void WriteBytes(const std::vector<uint8_t>& bytes, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

uint64_t WriteBmp(const Picture& picture, const std::string& path) {
  const auto [width, height, channels, bytes] =
      std::tie(picture.width, picture.height, picture.channels, picture.bytes);
  switch (channels) {
    case 1:
      Check(SaveBmpMono(bytes.data(), width, height, path.c_str()), "writing a BMP file");
      return 54 + 1024 + (uint64_t{width} + 3) / 4 * 4 * height;
    case 3:
      // SaveBmpRGB pads rows of odd width in a way that other programs do not read; the stride form does not.
      Check(SaveBmpRGBStrm(bytes.data(), width, height, 3 * width, path.c_str()), "writing a BMP file");
      return 54 + (3 * uint64_t{width} + 3) / 4 * 4 * height;
    default:
      Check(SaveBmpARGB(bytes.data(), width, height, path.c_str()), "writing a BMP file");
      return 54 + 4 * uint64_t{width} * height;
  }
}

void WriteJpeg(const Picture& picture, unsigned quality, const std::string& path, const fs::path& target) {
  if (std::max(picture.width, picture.height) > kMaxJpegSide) {
    throw Error(target.string(), ": a JPEG file holds at most ", kMaxJpegSide, " pixels a side, not ",
                picture.width, "x", picture.height);
  }
  const auto* bytes = picture.bytes.data();
  const uint32_t status =
      picture.channels == 1
          ? SaveJpegRQ(bytes, PRISMO_MONO8, quality, picture.width, picture.height, path.c_str())
          : SaveJpegQ(bytes, picture.channels == 3 ? kJpegLayoutBgr : kJpegLayoutBgra, quality, picture.width,
                      picture.height, path.c_str());
  Check(status, target.string() + ": writing");
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
  throw Error(kind_name.empty() ? Text(path.string(), ": the extension does not name a kind of output")
                                : Text("unknown kind of output '", kind_name, "'"),
              " (known:", all, ")");
}

std::string ExtensionOf(FileKind kind) {
  return Text(".", std::ranges::find(kKinds, kind, &KindName::kind)->name);
}

void WritePicture(const Picture& picture, FileKind kind, unsigned jpeg_quality, const fs::path& path) {
  OutputFile file(path);
  std::optional<uint64_t> expected_bytes;
  switch (kind) {
    case FileKind::kBmp:
      expected_bytes = WriteBmp(picture, file.scratch());
      break;
    // These two encoders report a disk that is full themselves.
    case FileKind::kPng:
      WritePng(picture, file.scratch(), path.string());
      break;
    case FileKind::kJpeg:
      WriteJpeg(picture, jpeg_quality, file.scratch(), path);
      break;
    default:
      WriteBytes(picture.bytes, file.scratch());
      expected_bytes = picture.bytes.size();
  }
  file.Commit(expected_bytes);
}

void WriteFrame(const Frame& frame, FileKind kind, const fs::path& path) {
  OutputFile file(path);
  uint64_t expected_bytes = frame.bytes.size();
  if (kind == FileKind::kRwh) {
    Check(SaveRWH(frame.bytes.data(), frame.format->code, frame.width, frame.height, file.scratch().c_str()),
          path.string() + ": writing");
    expected_bytes += 16;
  } else {
    WriteBytes(frame.bytes, file.scratch());
  }
  file.Commit(expected_bytes);
}

Picture ReadPicture(const fs::path& path) {
  LengthOfFile(path);
  std::ifstream file(path, std::ios::binary);
  if (!file) throw Error(path.string(), ": cannot be opened: ", std::strerror(errno));
  std::array<char, 4> start{};
  file.read(start.data(), start.size());
  if (std::string_view(start.data(), 2) == "BM") return ReadBmp(path);
  if (std::string_view(start.data(), 4) == "\x89PNG") return ReadPng(path);
  throw Error(path.string(), ": neither a BMP nor a PNG file");
}

Picture WithColourChannels(Picture picture) {
  if (picture.channels != 1) return picture;
  Picture colour = MakePicture(picture.width, picture.height, 3);
  for (size_t i = 0; i < picture.bytes.size(); ++i) std::fill_n(&colour.bytes[3 * i], 3, picture.bytes[i]);
  return colour;
}

}  // namespace prismo::tool

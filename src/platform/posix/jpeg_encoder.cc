#include "platform/jpeg_encoder.h"

#include <errno.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <system_error>
#include <type_traits>

#include "platform/kept_pages.h"
#include "platform/output_file.h"

namespace prismo::platform {
namespace {

constexpr uint32_t kMaxSide = 65500;  // the encoder's own limit, a little less than what a JPEG file can hold

// GDI+ takes 75 where no quality is given, and halves the chroma planes both ways at every quality. Files of
// both platforms look alike.
constexpr uint32_t kDefaultQuality = 75;
constexpr uint32_t kMaxQuality = 100;
constexpr TJSAMP kChroma = TJSAMP_420;

struct DestroyHandle {
  void operator()(void* handle) const { tjDestroy(handle); }
};

Status OpenFailure(int error) {
  return error == ENOENT || error == ENOTDIR ? Status::kFileNotFound : Status::kFailure;
}

// Devices and pipes stay.
void RemoveRegularFile(const char* path) {
  std::error_code ignored;
  const auto file = std::filesystem::canonical(path, ignored);
  if (std::filesystem::is_regular_file(file, ignored)) std::filesystem::remove(file, ignored);
}

Status WriteWhole(const char* path, const uint8_t* data, size_t bytes) {
  OutputFile file;
  if (!file.Open(path)) return OpenFailure(errno);
  file.Write(data, bytes);
  if (file.Close()) return Status::kSuccess;
  RemoveRegularFile(path);
  return Status::kFailure;
}

}  // namespace

struct JpegEncoder::State {
  std::shared_ptr<void> own;
  const void* pixels;
  TJPF format;
  FrameSize size;
};

JpegEncoder::JpegEncoder(const void* pixels, Layout layout, FrameSize size)
    : state_(new State{nullptr, pixels, layout == Layout::kBgra ? TJPF_BGRX : TJPF_BGR, size}) {}

JpegEncoder::JpegEncoder(FrameSize size) : JpegEncoder(nullptr, Layout::kBgra, size) {
  if (std::max(size.width, size.height) > INT32_MAX) return;  // the product below would not fit
  state_->own = TakePages(size.Pixels() * PixelBytes(Layout::kBgra));
  state_->pixels = state_->own.get();
}

JpegEncoder::~JpegEncoder() = default;

std::shared_ptr<void> JpegEncoder::Lock() { return state_->own; }

void JpegEncoder::Unlock() {}

void JpegEncoder::Abandon() {}

Status JpegEncoder::Save(const char* path, std::optional<uint32_t> quality) {
  if (quality > kMaxQuality) return Status::kInvalidParameter;

  const auto [width, height] = state_->size;
  if (std::max(width, height) > kMaxSide) return Status::kFailure;

  // The largest JPEG that the picture can become: of these pages only those that are written take up memory.
  unsigned long bytes = tjBufSize(static_cast<int>(width), static_cast<int>(height), kChroma);
  const auto jpeg = std::make_unique_for_overwrite<uint8_t[]>(bytes);

  const std::unique_ptr<std::remove_pointer_t<tjhandle>, DestroyHandle> encoder(tjInitCompress());
  uint8_t* out = jpeg.get();
  const int packed = 0;
  // Quality 0 is the lowest there is, which the encoder calls 1.
  const uint32_t encoder_quality = std::max(quality.value_or(kDefaultQuality), 1u);
  if (tjCompress2(encoder.get(), static_cast<const uint8_t*>(state_->pixels), static_cast<int>(width), packed,
                  static_cast<int>(height), state_->format, &out, &bytes, kChroma,
                  static_cast<int>(encoder_quality), TJFLAG_NOREALLOC) != 0) {
    return Status::kFailure;
  }
  return WriteWhole(path, out, bytes);
}

}  // namespace prismo::platform

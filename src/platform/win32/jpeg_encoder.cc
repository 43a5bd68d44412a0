#include "platform/jpeg_encoder.h"

#include <windows.h>

#include <gdiplus.h>
#include <shlwapi.h>

#include <cwchar>
#include <new>
#include <string>

#include "platform/folders.h"

namespace prismo::platform {
namespace {

// EncoderQuality, as published for image encoders.
constexpr GUID kQualityParameter = {
    0x1d5be4b5, 0xfa4a, 0x452d, {0x9c, 0xdd, 0x5d, 0xb3, 0x51, 0x05, 0xe7, 0xeb}};

// Null where the system has no JPEG encoder, which the bitmap then refuses to be saved with.
CLSID JpegEncoderClass() {
  UINT count = 0;
  UINT bytes = 0;
  Gdiplus::GetImageEncodersSize(&count, &bytes);
  const auto list = std::unique_ptr<std::byte[]>(bytes > 0 ? new (std::nothrow) std::byte[bytes] : nullptr);
  if (!list) return {};
  const auto* encoders = reinterpret_cast<Gdiplus::ImageCodecInfo*>(list.get());
  Gdiplus::GetImageEncoders(count, bytes, reinterpret_cast<Gdiplus::ImageCodecInfo*>(list.get()));
  for (UINT i = 0; i < count; ++i) {
    if (std::wcscmp(encoders[i].MimeType, L"image/jpeg") == 0) return encoders[i].Clsid;
  }
  return {};
}

// GDI+ has no word of its own for a folder that is not there.
bool LacksFolder(const char* path) {
  std::string folder(path);
  const size_t end = folder.find_last_of("\\/");
  return end != std::string::npos && end > 0 && folder[end - 1] != ':' && !IsFolder(folder.substr(0, end));
}

Status StatusOf(Gdiplus::Status status, const char* path) {
  switch (status) {
    case Gdiplus::Ok:
      return Status::kSuccess;
    case Gdiplus::InvalidParameter:
      return Status::kInvalidParameter;
    case Gdiplus::FileNotFound:
      return Status::kFileNotFound;
    default:
      return LacksFolder(path) ? Status::kFileNotFound : Status::kFailure;
  }
}

}  // namespace

struct JpegEncoder::State {
  explicit State(FrameSize frame_size) : size(frame_size) {
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&context, &input, nullptr) != Gdiplus::Ok) throw std::bad_alloc();
  }

  ~State() {
    bitmap.reset();
    Gdiplus::GdiplusShutdown(context);
  }

  INT Width() const { return static_cast<INT>(size.width); }
  INT Height() const { return static_cast<INT>(size.height); }

  const FrameSize size;
  ULONG_PTR context = 0;
  // Whether it could be made shows when it is saved.
  std::unique_ptr<Gdiplus::Bitmap> bitmap;
  Gdiplus::BitmapData locked{};
};

JpegEncoder::JpegEncoder(const void* pixels, Layout layout, FrameSize size) : state_(new State(size)) {
  const bool bgr = layout == Layout::kBgr;
  auto* first = static_cast<BYTE*>(const_cast<void*>(pixels));  // only read
  state_->bitmap.reset(new Gdiplus::Bitmap(state_->Width(), state_->Height(),
                                           static_cast<INT>(size.width * (bgr ? 3 : 4)),
                                           bgr ? PixelFormat24bppRGB : PixelFormat32bppARGB, first));
}

JpegEncoder::JpegEncoder(FrameSize size) : state_(new State(size)) {
  state_->bitmap.reset(new Gdiplus::Bitmap(state_->Width(), state_->Height(), PixelFormat32bppARGB));
}

JpegEncoder::~JpegEncoder() = default;

// The pixels belong to the bitmap.
std::shared_ptr<void> JpegEncoder::Lock() {
  const Gdiplus::Rect whole(0, 0, state_->Width(), state_->Height());
  state_->bitmap->LockBits(&whole, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite,
                           state_->bitmap->GetPixelFormat(), &state_->locked);
  return {std::shared_ptr<void>(), state_->locked.Scan0};
}

void JpegEncoder::Unlock() { state_->bitmap->UnlockBits(&state_->locked); }

// Workers of a conversion that was given up may still be writing to the bitmap: it stays, and so does the
// context in which it lives.
void JpegEncoder::Abandon() { static_cast<void>(state_.release()); }

Status JpegEncoder::Save(const char* path, std::optional<uint32_t> quality) {
  const CLSID encoder = JpegEncoderClass();

  WCHAR wide_path[MAX_PATH] = {};
  MultiByteToWideChar(CP_ACP, 0, path, -1, wide_path, MAX_PATH);

  ULONG value = quality.value_or(0);
  Gdiplus::EncoderParameters parameters{};
  parameters.Count = 1;
  parameters.Parameter[0] = {kQualityParameter, 1, Gdiplus::EncoderParameterValueTypeLong, &value};
  return StatusOf(state_->bitmap->Save(wide_path, &encoder, quality ? &parameters : nullptr), path);
}

}  // namespace prismo::platform

/**
 * @file prismoutl.hpp
 * PrismoUtl for C++20 programs: the functions of PrismoUtl.h with their buffers checked before any call.
 *
 *     std::vector<std::byte> bgra(prismoutl::PictureBytes(Layout::kBgra, 1920, 1080));
 *     Convert({kBayerRG12, 1920, 1080, frame}, Layout::kBgra, bgra).OrThrow();
 *
 * - Buffers are contiguous ranges of any plain type: vectors, arrays, spans. They may be larger than needed.
 * - A call returns a Result: ask it (`if (!result)`), take it as std::error_code, or call OrThrow().
 * - Threads::kAuto uses the worker pool for frames that are safe on it, and the caller's thread for others:
 * few rows, which could only end in a time-out there, and odd heights.
 * - After a time-out the workers finish the block that they are in: keep the buffers until the Pool is
 * closed.
 * - Linking is as for C: everything here is inline.
 */
#ifndef PRISMOUTL_HPP_
#define PRISMOUTL_HPP_

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "PrismoUtl.h"

namespace prismoutl {

/* ---------------------------------------------------------------------------------------------- */
/* Errors */

/** The statuses of the library, and the mistakes that are found before it is called. */
enum class Errc : std::uint32_t {
  kSuccess = UTL_STS_SUCCESS,
  kInvalidParameter = UTL_STS_INVALID_PARAMETER,
  kTimeout = UTL_STS_TIMEOUT,
  kFileOpenError = UTL_STS_FILE_OPEN_ERROR,
  kFileWriteError = UTL_STS_FILE_WRITE_ERROR,
  kFileReadError = UTL_STS_FILE_READ_ERROR,
  kFileNotFound = UTL_STS_FILE_NOT_FOUND,
  kFailure = UTL_STS_FAILURE,

  kUnknownFormat = 0x10000,
  kNoConversion,
  kEmptyFrame,
  kFrameTooLarge,
  kWidthNotMultiple,
  kHeightNotMultiple,
  kSourceTooSmall,
  kDestinationTooSmall,
  kBuffersOverlap,
  kUnsafeOnPool,
  kRectangleOutside,
  kQualityOutOfRange,
  kPriorityOutOfRange,
  kFileTooShort,
  kRowSizeMismatch,
  kPoolClosed,
};

namespace detail {

struct ErrcText {
  Errc code;
  const char* name;
  const char* text;
};

inline constexpr ErrcText kErrcTexts[] = {
    {Errc::kSuccess, "UTL_STS_SUCCESS", "success"},
    {Errc::kInvalidParameter, "UTL_STS_INVALID_PARAMETER", "the library refused a parameter"},
    {Errc::kTimeout, "UTL_STS_TIMEOUT",
     "the worker pool did not finish in time; raise the time-out, and keep the buffers until the pool is "
     "closed"},
    {Errc::kFileOpenError, "UTL_STS_FILE_OPEN_ERROR", "the file could not be opened; check path and rights"},
    {Errc::kFileWriteError, "UTL_STS_FILE_WRITE_ERROR",
     "writing the file failed; check the space on the disk"},
    {Errc::kFileReadError, "UTL_STS_FILE_READ_ERROR", "reading the file failed, or memory for it ran out"},
    {Errc::kFileNotFound, "UTL_STS_FILE_NOT_FOUND", "no such folder; create it first"},
    {Errc::kFailure, "UTL_STS_FAILURE",
     "the library failed: memory, threads or the space on the disk ran out, or a work's callback threw"},
    {Errc::kUnknownFormat, "unknown format", "no pixel format has this code; PrismoUtl.h lists them"},
    {Errc::kNoConversion, "no conversion",
     "the format has no such conversion; take another layout or method, or reduce the frame to kGrey first"},
    {Errc::kEmptyFrame, "empty frame", "width and height have to be 1 or more"},
    {Errc::kFrameTooLarge, "frame too large", "a frame has at most 2^28 pixels; convert it in parts"},
    {Errc::kWidthNotMultiple, "wrong width",
     "the format needs a width that is a multiple of the needed one; crop the frame"},
    {Errc::kHeightNotMultiple, "wrong height",
     "the format needs a height that is a multiple of the needed one; crop the frame"},
    {Errc::kSourceTooSmall, "source too small", "the source has fewer bytes than its format and size say"},
    {Errc::kDestinationTooSmall, "destination too small",
     "make the destination as large as FrameBytes or "
     "PictureBytes say"},
    {Errc::kBuffersOverlap, "buffers overlap", "source and destination overlap; use another destination"},
    {Errc::kUnsafeOnPool, "unsafe on the pool",
     "the pool needs an even number of rows and 40 or more; use Threads::kAuto or Threads::kCaller"},
    {Errc::kRectangleOutside, "rectangle outside",
     "a rectangle has an even size, fits its destination and keeps two pixels from every edge of the frame"},
    {Errc::kQualityOutOfRange, "quality out of range", "the quality of a JPEG file is 0 to 100"},
    {Errc::kPriorityOutOfRange, "priority out of range", "priorities are -2 to 2"},
    {Errc::kFileTooShort, "file too short", "the file ends before its frame; write it again"},
    {Errc::kRowSizeMismatch, "wrong row size",
     "the file's row size is not that of its format and width; write it again"},
    {Errc::kPoolClosed, "pool closed", "the pool was closed; make a new Pool"},
};

// "BayerRG12, 0x01100011"
inline std::string FormatText(std::uint64_t code);

class Category final : public std::error_category {
 public:
  const char* name() const noexcept override { return "PrismoUtl"; }

  std::string message(int value) const override {
    const ErrcText* known = Find(value);
    if (known == nullptr) return "unknown status " + std::to_string(static_cast<std::uint32_t>(value));
    return std::string(known->name) + ": " + known->text;
  }

  std::error_condition default_error_condition(int value) const noexcept override {
    switch (static_cast<Errc>(value)) {
      case Errc::kTimeout:
        return std::errc::timed_out;
      case Errc::kFileOpenError:
      case Errc::kFileWriteError:
      case Errc::kFileReadError:
      case Errc::kFileTooShort:
        return std::errc::io_error;
      case Errc::kFileNotFound:
        return std::errc::no_such_file_or_directory;
      case Errc::kSuccess:
      case Errc::kFailure:
        return {value, *this};
      default:
        return Find(value) ? make_error_condition(std::errc::invalid_argument)
                           : std::error_condition(value, *this);
    }
  }

 private:
  static const ErrcText* Find(int value) noexcept {
    const auto* found = std::ranges::find(kErrcTexts, static_cast<Errc>(value), &ErrcText::code);
    return found == std::end(kErrcTexts) ? nullptr : found;
  }
};

}  // namespace detail

inline const std::error_category& ErrorCategory() noexcept {
  static const detail::Category category;
  return category;
}

inline std::error_code make_error_code(Errc code) noexcept {
  return {static_cast<int>(code), ErrorCategory()};
}

/** What a failed Result throws. */
class Error : public std::system_error {
 public:
  Error(std::error_code code, const std::string& what) : std::system_error(code), what_(what) {}
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  std::string what_;
};

/** How a call ended, with the value that was wrong and the one that would have been right. */
class [[nodiscard]] Result {
 public:
  Result() noexcept = default;
  Result(Errc code) noexcept : code_(code) {}
  Result(Errc code, std::uint64_t given, std::uint64_t needed) noexcept
      : code_(code), has_values_(true), given_(given), needed_(needed) {}
  Result(Errc code, std::string subject) noexcept : code_(code), subject_(std::move(subject)) {}

  /** The same about a file. */
  Result About(std::string subject) const {
    Result result = *this;
    result.subject_ = std::move(subject);
    return result;
  }

  static Result OfStatus(std::uint32_t status) noexcept { return static_cast<Errc>(status); }

  explicit operator bool() const noexcept { return code_ == Errc::kSuccess; }
  operator std::error_code() const noexcept { return make_error_code(code_); }
  Errc Code() const noexcept { return code_; }
  friend bool operator==(const Result& result, Errc code) noexcept { return result.code_ == code; }

  std::string Message() const {
    std::string text = subject_.empty() ? "" : subject_ + ": ";
    text += make_error_code(code_).message();
    if (!has_values_) return text;
    if (code_ == Errc::kUnknownFormat || code_ == Errc::kNoConversion)
      return text + " (" + detail::FormatText(given_) + ")";
    const auto number = [](std::uint64_t value) { return std::to_string(static_cast<std::int64_t>(value)); };
    return text + " (" + number(given_) + " given, " + number(needed_) + " needed)";
  }

  void OrThrow() const {
    if (code_ != Errc::kSuccess) throw Error(make_error_code(code_), Message());
  }

 private:
  Errc code_ = Errc::kSuccess;
  bool has_values_ = false;
  std::uint64_t given_ = 0, needed_ = 0;
  std::string subject_;
};

/* ---------------------------------------------------------------------------------------------- */
/* Frames and pictures */

enum class FormatKind : std::uint8_t { kMono, kBayer, kColour, kYuv };

namespace detail {

struct FormatInfo {
  std::uint32_t code;
  std::string_view name;
  FormatKind kind;
  std::uint8_t depth;
};

inline constexpr FormatInfo kFormats[] = {
    {PRISMO_MONO8, "Mono8", FormatKind::kMono, 8},
    {PRISMO_MONO10, "Mono10", FormatKind::kMono, 10},
    {PRISMO_MONO12, "Mono12", FormatKind::kMono, 12},
    {PRISMO_MONO16, "Mono16", FormatKind::kMono, 16},
    {PRISMO_BAYER_GR8, "BayerGR8", FormatKind::kBayer, 8},
    {PRISMO_BAYER_RG8, "BayerRG8", FormatKind::kBayer, 8},
    {PRISMO_BAYER_GB8, "BayerGB8", FormatKind::kBayer, 8},
    {PRISMO_BAYER_BG8, "BayerBG8", FormatKind::kBayer, 8},
    {PRISMO_BAYER_GR10, "BayerGR10", FormatKind::kBayer, 10},
    {PRISMO_BAYER_RG10, "BayerRG10", FormatKind::kBayer, 10},
    {PRISMO_BAYER_GB10, "BayerGB10", FormatKind::kBayer, 10},
    {PRISMO_BAYER_BG10, "BayerBG10", FormatKind::kBayer, 10},
    {PRISMO_BAYER_GR12, "BayerGR12", FormatKind::kBayer, 12},
    {PRISMO_BAYER_RG12, "BayerRG12", FormatKind::kBayer, 12},
    {PRISMO_BAYER_GB12, "BayerGB12", FormatKind::kBayer, 12},
    {PRISMO_BAYER_BG12, "BayerBG12", FormatKind::kBayer, 12},
    {PRISMO_RGB8, "RGB8", FormatKind::kColour, 8},
    {PRISMO_BGR8, "BGR8", FormatKind::kColour, 8},
    {PRISMO_RGB10, "RGB10", FormatKind::kColour, 10},
    {PRISMO_BGR10, "BGR10", FormatKind::kColour, 10},
    {PRISMO_RGB12, "RGB12", FormatKind::kColour, 12},
    {PRISMO_BGR12, "BGR12", FormatKind::kColour, 12},
    {PRISMO_YUV411, "YUV411_8_UYYVYY", FormatKind::kYuv, 8},
    {PRISMO_YUV422, "YUV422_8_UYVY", FormatKind::kYuv, 8},
    {PRISMO_YUV444, "YUV8_UYV", FormatKind::kYuv, 8},
    {PRISMO_BGRA8, "BGRA8", FormatKind::kColour, 8},
    {PRISMO_BGRA10, "BGRA10", FormatKind::kColour, 10},
    {PRISMO_BGR8_PADDED, "BGR8PadVexo", FormatKind::kColour, 8},
    {PRISMO_MONO8_PADDED, "Mono8Pad", FormatKind::kMono, 8},
};

constexpr std::uint64_t RoundUpTo4(std::uint64_t bytes) { return (bytes + 3) / 4 * 4; }

}  // namespace detail

/** A pixel format by its PFNC code. */
struct Format {
  std::uint32_t code = 0;

  friend constexpr bool operator==(Format, Format) = default;

  /** By its name, for example "BayerRG12". */
  static constexpr std::optional<Format> Named(std::string_view name) noexcept {
    for (const auto& info : detail::kFormats)
      if (info.name == name) return Format{info.code};
    return std::nullopt;
  }

  constexpr bool IsKnown() const noexcept { return Depth() != 0; }
  constexpr std::string_view Name() const noexcept { return Info().name; }
  constexpr FormatKind Kind() const noexcept { return Info().kind; }
  constexpr bool IsBayer() const noexcept { return Kind() == FormatKind::kBayer; }
  constexpr unsigned Depth() const noexcept { return Info().depth; }
  constexpr unsigned BitsPerPixel() const noexcept { return code >> 16 & 0xFF; }
  constexpr bool HasPaddedRows() const noexcept {
    return code == PRISMO_BGR8_PADDED || code == PRISMO_MONO8_PADDED;
  }

  /** Widths and heights have to be multiples of these. */
  constexpr std::uint32_t WidthUnit() const noexcept {
    return code == PRISMO_YUV411 ? 4 : code == PRISMO_YUV422 || IsBayer() ? 2 : 1;
  }
  constexpr std::uint32_t HeightUnit() const noexcept { return IsBayer() ? 2 : 1; }

  constexpr std::uint64_t RowBytes(std::uint32_t width) const noexcept {
    const std::uint64_t bytes = std::uint64_t{BitsPerPixel()} * width / 8;
    return HasPaddedRows() ? detail::RoundUpTo4(bytes) : bytes;
  }

 private:
  constexpr detail::FormatInfo Info() const noexcept {
    for (const auto& info : detail::kFormats)
      if (info.code == code) return info;
    return {code, "unknown", FormatKind::kMono, 0};
  }
};

inline constexpr Format kMono8{PRISMO_MONO8}, kMono10{PRISMO_MONO10}, kMono12{PRISMO_MONO12},
    kMono16{PRISMO_MONO16}, kBayerGR8{PRISMO_BAYER_GR8}, kBayerRG8{PRISMO_BAYER_RG8},
    kBayerGB8{PRISMO_BAYER_GB8}, kBayerBG8{PRISMO_BAYER_BG8}, kBayerGR10{PRISMO_BAYER_GR10},
    kBayerRG10{PRISMO_BAYER_RG10}, kBayerGB10{PRISMO_BAYER_GB10}, kBayerBG10{PRISMO_BAYER_BG10},
    kBayerGR12{PRISMO_BAYER_GR12}, kBayerRG12{PRISMO_BAYER_RG12}, kBayerGB12{PRISMO_BAYER_GB12},
    kBayerBG12{PRISMO_BAYER_BG12}, kRgb8{PRISMO_RGB8}, kBgr8{PRISMO_BGR8}, kRgb10{PRISMO_RGB10},
    kBgr10{PRISMO_BGR10}, kRgb12{PRISMO_RGB12}, kBgr12{PRISMO_BGR12}, kYuv411{PRISMO_YUV411},
    kYuv422{PRISMO_YUV422}, kYuv444{PRISMO_YUV444}, kBgra8{PRISMO_BGRA8}, kBgra10{PRISMO_BGRA10},
    kBgr8Padded{PRISMO_BGR8_PADDED}, kMono8Padded{PRISMO_MONO8_PADDED};

namespace detail {

inline std::string FormatText(std::uint64_t code) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const Format format{static_cast<std::uint32_t>(code)};
  std::string text = format.IsKnown() ? std::string(format.Name()) + ", 0x" : "0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[code >> shift & 15];
  return text;
}

}  // namespace detail

/** Pictures of 8-bit channels, top row first: B G R 255, B G R, B G R with rows of a multiple of 4 bytes,
 * grey. */
enum class Layout : std::uint8_t { kBgra, kBgr, kBgrPadded, kGrey };

constexpr std::uint64_t FrameBytes(Format format, std::uint32_t width, std::uint32_t height) noexcept {
  return format.RowBytes(width) * height;
}

constexpr std::uint64_t PictureRowBytes(Layout layout, std::uint32_t width) noexcept {
  const std::uint64_t pixel = layout == Layout::kBgra ? 4 : layout == Layout::kGrey ? 1 : 3;
  return layout == Layout::kBgrPadded ? detail::RoundUpTo4(pixel * width) : pixel * width;
}

constexpr std::uint64_t PictureBytes(Layout layout, std::uint32_t width, std::uint32_t height) noexcept {
  return PictureRowBytes(layout, width) * height;
}

/** Memory that frames and pictures can lie in. */
template <class R>
concept Buffer = std::ranges::contiguous_range<R> && std::ranges::sized_range<R> &&
    std::is_trivially_copyable_v<std::ranges::range_value_t<R>>;
template <class R>
concept WritableBuffer =
    Buffer<R> && !std::is_const_v<std::remove_reference_t<std::ranges::range_reference_t<R>>>;

/** Bytes of a buffer to read or to write; refers to it. */
struct Bytes : std::span<const std::byte> {
  template <Buffer R>
  requires(!std::is_same_v<std::remove_cvref_t<R>, Bytes>) Bytes(const R& range)
  noexcept : std::span<const std::byte>(std::as_bytes(std::span(range))) {}
};
struct WritableBytes : std::span<std::byte> {
  template <WritableBuffer R>
  requires(!std::is_same_v<std::remove_cvref_t<R>, WritableBytes>) WritableBytes(R&& range)
  noexcept : std::span<std::byte>(std::as_writable_bytes(std::span(range))) {}
};

/** A frame in its camera's format; refers to its bytes. */
struct Frame {
  Format format;
  std::uint32_t width;
  std::uint32_t height;
  Bytes bytes;
};

/** An 8-bit picture; refers to its bytes. */
struct Picture {
  Layout layout;
  std::uint32_t width;
  std::uint32_t height;
  Bytes bytes;
};

struct Rectangle {
  std::uint32_t left, top, width, height;
};

enum class Demosaic : std::uint8_t {
  kBilinear,
  kAdaptive,  ///< 8-bit frames only: convert frames of more bits to kGrey first
  kNone,      ///< shows the samples as grey
};

enum class Threads : std::uint8_t {
  kAuto,    ///< the pool where that is safe, otherwise the caller's thread
  kCaller,  ///< the caller's thread
  kPool,    ///< the pool, or an error where that is not safe
};

namespace detail {

inline constexpr std::uint64_t kMaxPixels = std::uint64_t{1} << 28;

// Works need two rows for each thread of the pool, which has 16 at most, and some leave out rows at the
// borders.
inline constexpr std::uint32_t kMinPoolRows = 2 * 16 + 8;

constexpr bool IsSafeOnPool(std::uint32_t rows) noexcept { return rows >= kMinPoolRows && rows % 2 == 0; }

inline Result CheckSize(Format format, std::uint32_t width, std::uint32_t height) noexcept {
  if (!format.IsKnown()) return {Errc::kUnknownFormat, format.code, 0};
  if (width == 0 || height == 0) return {Errc::kEmptyFrame, 0, 1};
  const std::uint64_t pixels = std::uint64_t{width} * height;
  if (pixels > kMaxPixels) return {Errc::kFrameTooLarge, pixels, kMaxPixels};
  if (width % format.WidthUnit()) return {Errc::kWidthNotMultiple, width, format.WidthUnit()};
  if (height % format.HeightUnit()) return {Errc::kHeightNotMultiple, height, format.HeightUnit()};
  return {};
}

inline Result NoConversion(Format format) noexcept { return {Errc::kNoConversion, format.code, 0}; }

inline Result CheckFrame(const Frame& frame) noexcept {
  if (Result result = CheckSize(frame.format, frame.width, frame.height); !result) return result;
  const std::uint64_t needed = FrameBytes(frame.format, frame.width, frame.height);
  if (frame.bytes.size() < needed) return {Errc::kSourceTooSmall, frame.bytes.size(), needed};
  return {};
}

inline Result CheckPicture(const Picture& picture) noexcept {
  if (Result result = CheckSize(kMono8, picture.width, picture.height); !result) return result;
  const std::uint64_t needed = PictureBytes(picture.layout, picture.width, picture.height);
  if (picture.bytes.size() < needed) return {Errc::kSourceTooSmall, picture.bytes.size(), needed};
  return {};
}

inline Result CheckDestination(WritableBytes dst, std::uint64_t needed, Bytes src,
                               std::uint64_t src_needed) noexcept {
  if (dst.size() < needed) return {Errc::kDestinationTooSmall, dst.size(), needed};
  const std::less<const std::byte*> before;
  if (before(dst.data(), src.data() + src_needed) && before(src.data(), dst.data() + needed))
    return Errc::kBuffersOverlap;
  return {};
}

inline Result CheckDestination(WritableBytes dst, std::uint64_t needed, const Frame& frame) noexcept {
  return CheckDestination(dst, needed, frame.bytes, FrameBytes(frame.format, frame.width, frame.height));
}

// Decides for the pool, and makes ready the tables that some works of the pool trust to be there.
inline Result ChoosePool(Threads threads, std::uint32_t rows, bool& pool) noexcept {
  pool = threads != Threads::kCaller && IsSafeOnPool(rows);
  if (threads == Threads::kPool && !pool) return {Errc::kUnsafeOnPool, rows, kMinPoolRows};
  if (pool && GetLUTReady() == 0) PrepareLUT();
  return {};
}

inline Result ToGrey(const Frame& frame, WritableBytes dst) noexcept {
  const Format format = frame.format;
  if (format.Kind() != FormatKind::kMono && !format.IsBayer()) return NoConversion(format);
  if (format.Depth() == 8) {
    for (std::size_t y = 0; y < frame.height; ++y)
      std::memcpy(&dst[y * frame.width], &frame.bytes[y * format.RowBytes(frame.width)], frame.width);
    return {};
  }
  const std::uint32_t code = format.Depth() == 10   ? PRISMO_MONO10
                             : format.Depth() == 12 ? PRISMO_MONO12
                                                    : PRISMO_MONO16;
  return Result::OfStatus(MonoNToMono8(dst.data(), frame.bytes.data(), code,
                                       static_cast<std::int32_t>(frame.width),
                                       static_cast<std::int32_t>(frame.height), 0));
}

}  // namespace detail

/* ---------------------------------------------------------------------------------------------- */
/* Conversions */

/**
 * Converts a frame to a picture of the same size. kGrey is for monochrome and Bayer frames and reduces their
 * samples to 8 bits; a Bayer frame stays a mosaic, of the 8-bit format of its phase. BGRA10 has no
 * conversion.
 */
inline Result Convert(const Frame& frame, Layout layout, WritableBytes dst,
                      Demosaic demosaic = Demosaic::kBilinear, Threads threads = Threads::kAuto) noexcept {
  if (Result result = detail::CheckFrame(frame); !result) return result;
  const std::uint64_t needed = PictureBytes(layout, frame.width, frame.height);
  if (Result result = detail::CheckDestination(dst, needed, frame); !result) return result;
  if (layout == Layout::kGrey) return detail::ToGrey(frame, dst);

  const Format format = frame.format;
  const bool padded = layout == Layout::kBgrPadded;
  if (format == kBgra8) {
    return Result::OfStatus(layout == Layout::kBgra
                                ? BGRA8ToBGRA_SP(dst.data(), frame.bytes.data(), frame.width, frame.height)
                                : BGRA8ToBGR_SP(dst.data(), frame.bytes.data(),
                                                static_cast<std::int32_t>(frame.width),
                                                static_cast<std::int32_t>(frame.height), padded));
  }
  const bool adaptive = format.IsBayer() && demosaic == Demosaic::kAdaptive;
  if (format == kBgra10 || (adaptive && format.Depth() != 8)) return detail::NoConversion(format);
  bool pool;
  if (Result result = detail::ChoosePool(threads, frame.height, pool); !result) return result;
  const std::uint32_t output = layout == Layout::kBgra ? 0 : padded ? 2 : 1;
  const std::uint32_t method = adaptive ? 1 : demosaic == Demosaic::kNone ? 8 : 0;
  return Result::OfStatus(ConvImageEx(output, format.code, dst.data(), frame.bytes.data(), frame.width,
                                      frame.height, method, pool));
}

/** Samples and pixels by format and layout, for conversions whose types the compiler checks. */
struct Bgra {
  std::uint8_t blue, green, red, alpha;
};
struct Bgr {
  std::uint8_t blue, green, red;
};
template <Format kFormat>
using SampleOf = std::conditional_t<(kFormat.Depth() > 8), std::uint16_t, std::uint8_t>;
template <Layout kLayout>
using PixelOf = std::conditional_t<kLayout == Layout::kBgra, Bgra,
                                   std::conditional_t<kLayout == Layout::kBgr, Bgr, std::uint8_t>>;

/** A conversion between known types: `ConvertTyped<kBayerRG12, Layout::kBgr>(words, pixels, 1920, 1080)`. */
template <Format kFormat, Layout kLayout>
requires(kFormat.IsKnown() && kFormat != kBgra10 &&
         (kLayout != Layout::kGrey || kFormat.Kind() == FormatKind::kMono || kFormat.IsBayer())) Result
    ConvertTyped(std::span<const SampleOf<kFormat>> src, std::span<PixelOf<kLayout>> dst, std::uint32_t width,
                 std::uint32_t height, Demosaic demosaic = Demosaic::kBilinear,
                 Threads threads = Threads::kAuto)
noexcept { return Convert({kFormat, width, height, src}, kLayout, dst, demosaic, threads); }

/** Splits an RGB8 or BGR8 frame, or demosaics an 8-bit Bayer frame bilinearly, into planes of width x height.
 */
inline Result ConvertToPlanes(const Frame& frame, WritableBytes blue, WritableBytes green, WritableBytes red,
                              Threads threads = Threads::kAuto) noexcept {
  if (Result result = detail::CheckFrame(frame); !result) return result;
  const bool bayer8 = frame.format.IsBayer() && frame.format.Depth() == 8;
  if (!bayer8 && frame.format != kRgb8 && frame.format != kBgr8) return detail::NoConversion(frame.format);
  const std::uint64_t needed = std::uint64_t{frame.width} * frame.height;
  for (const auto& [plane, other] : {std::pair{blue, green}, std::pair{green, red}, std::pair{red, blue}}) {
    if (Result result = detail::CheckDestination(plane, needed, frame); !result) return result;
    if (Result result = detail::CheckDestination(plane, needed, other, needed); !result) return result;
  }
  bool pool;
  if (Result result = detail::ChoosePool(threads, frame.height, pool); !result) return result;
  return Result::OfStatus(ConvImagePlanarEx(frame.format.code, blue.data(), green.data(), red.data(),
                                            frame.bytes.data(), frame.width, frame.height, pool, 0));
}

namespace detail {

// Columns or rows of a rectangle, which keeps two pixels from the edges.
inline Result CheckSpan(std::uint32_t first, std::uint32_t count, std::uint32_t all) noexcept {
  if (first < 2) return {Errc::kRectangleOutside, first, 2};
  if (count == 0 || count % 2) return {Errc::kRectangleOutside, count, std::uint64_t{count} + 2 - count % 2};
  const std::uint64_t end = std::uint64_t{first} + count + 2;
  if (end > all) return {Errc::kRectangleOutside, end, all};
  return {};
}

}  // namespace detail

/**
 * Demosaics a rectangle of an 8-bit Bayer frame adaptively into a picture of the rectangle's size. It is that
 * part of the whole picture, but for its outermost pixels.
 */
inline Result ConvertRectangle(const Frame& frame, const Rectangle& rectangle, Layout layout,
                               WritableBytes dst, Threads threads = Threads::kAuto) noexcept {
  if (Result result = detail::CheckFrame(frame); !result) return result;
  if (!frame.format.IsBayer() || frame.format.Depth() != 8 || layout == Layout::kGrey)
    return detail::NoConversion(frame.format);
  const auto& [left, top, width, height] = rectangle;
  if (Result result = detail::CheckSpan(left, width, frame.width); !result) return result;
  if (Result result = detail::CheckSpan(top, height, frame.height); !result) return result;
  const std::uint64_t needed = PictureBytes(layout, width, height);
  if (Result result = detail::CheckDestination(dst, needed, frame); !result) return result;
  bool pool;
  if (Result result = detail::ChoosePool(threads, height, pool); !result) return result;
  const std::uint32_t output = layout == Layout::kBgra ? 0 : layout == Layout::kBgr ? 1 : 2;
  return Result::OfStatus(ConvBayerRectEx_ACPI(output, frame.format.code, dst.data(), frame.bytes.data(),
                                               frame.width, frame.height, left, top, width, height, width,
                                               height, 0, 0, pool));
}

/* ---------------------------------------------------------------------------------------------- */
/* Mirrors and synthesis */

struct Directions {
  bool horizontal = false;  ///< left becomes right
  bool vertical = false;    ///< top becomes bottom
};

/** The format of a mirrored frame: a Bayer frame changes its phase. */
constexpr Format MirroredFormat(Format format, Directions directions) noexcept {
  if (!format.IsBayer()) return format;
  // Phases lie side by side in every depth: GR, RG, GB, BG.
  const std::uint32_t phase =
      (format.code & 3) ^ (directions.horizontal ? 1u : 0u) ^ (directions.vertical ? 3u : 0u);
  return {(format.code & ~3u) | phase};
}

/** Mirrors a frame in its own format, on the caller's thread. BGRA and padded formats have no mirror. */
inline Result Mirror(const Frame& frame, Directions directions, WritableBytes dst) noexcept {
  if (Result result = detail::CheckFrame(frame); !result) return result;
  if (frame.format.HasPaddedRows() || frame.format == kBgra8 || frame.format == kBgra10)
    return detail::NoConversion(frame.format);
  const std::uint64_t needed = FrameBytes(frame.format, frame.width, frame.height);
  if (Result result = detail::CheckDestination(dst, needed, frame); !result) return result;
  return Result::OfStatus(RvrsImg_SP(dst.data(), frame.bytes.data(), frame.format.code, frame.width,
                                     frame.height, directions.horizontal, directions.vertical));
}

/** Makes the frame of a picture that a camera of the format would have seen. */
inline Result MakeFrame(const Picture& picture, Format format, WritableBytes dst) noexcept {
  if (Result result = detail::CheckPicture(picture); !result) return result;
  if (Result result = detail::CheckSize(format, picture.width, picture.height); !result) return result;
  if (picture.layout == Layout::kGrey || format.HasPaddedRows() || format == kBgra8 || format == kBgra10)
    return detail::NoConversion(format);
  const std::uint64_t needed = FrameBytes(format, picture.width, picture.height);
  const std::uint64_t picture_bytes = PictureBytes(picture.layout, picture.width, picture.height);
  if (Result result = detail::CheckDestination(dst, needed, picture.bytes, picture_bytes); !result)
    return result;

  const bool bgra = picture.layout == Layout::kBgra, padded = picture.layout == Layout::kBgrPadded;
  if (!format.IsBayer()) {
    return Result::OfStatus(ToRaw(dst.data(), picture.bytes.data(), format.code,
                                  bgra ? PRISMO_BGRA8 : PRISMO_BGR8, picture.width, picture.height, padded));
  }
  // Of each phase the channels at the top left, bottom left, top right and bottom right: 0 blue, 1 green, 2
  // red.
  static constexpr std::int32_t kSites[4][4] = {{1, 0, 2, 1}, {2, 1, 1, 0}, {1, 2, 0, 1}, {0, 1, 1, 2}};
  const auto to_bayer = format.Depth() == 8    ? &ToBayer8to8
                        : format.Depth() == 10 ? &ToBayer8to10
                                               : &ToBayer8to12;
  return Result::OfStatus(to_bayer(dst.data(), picture.bytes.data(), kSites[format.code & 3],
                                   static_cast<std::int32_t>(picture.width), picture.height, bgra ? 4 : 3,
                                   padded));
}

/* ---------------------------------------------------------------------------------------------- */
/* Files */

namespace detail {

inline Result OfFile(std::uint32_t status, const std::string& path) {
  return status == UTL_STS_SUCCESS ? Result() : Result(static_cast<Errc>(status), path);
}

}  // namespace detail

inline Result SaveBmp(const Picture& picture, const std::filesystem::path& path) {
  if (Result result = detail::CheckPicture(picture); !result) return result;
  const auto save = picture.layout == Layout::kBgra   ? &SaveBmpARGBStrm
                    : picture.layout == Layout::kGrey ? &SaveBmpMonoStrm
                                                      : &SaveBmpRGBStrm;
  const auto stride = static_cast<std::uint32_t>(PictureRowBytes(picture.layout, picture.width));
  return detail::OfFile(
      save(picture.bytes.data(), picture.width, picture.height, stride, path.string().c_str()),
      path.string());
}

/** Writes a BGRA or BGR picture; without a quality, with the encoder's default. */
inline Result SaveJpeg(const Picture& picture, const std::filesystem::path& path,
                       std::optional<std::uint32_t> quality = {}) {
  if (Result result = detail::CheckPicture(picture); !result) return result;
  if (picture.layout != Layout::kBgra && picture.layout != Layout::kBgr) {
    return Result(Errc::kNoConversion, "JPEG files are made of BGR and BGRA pictures");
  }
  if (quality && *quality > 100) return {Errc::kQualityOutOfRange, *quality, 100};
  const std::uint32_t layout = picture.layout == Layout::kBgr;
  const std::string name = path.string();
  return detail::OfFile(
      quality
          ? ::SaveJpegQ(picture.bytes.data(), layout, *quality, picture.width, picture.height, name.c_str())
          : ::SaveJpeg(picture.bytes.data(), layout, picture.width, picture.height, name.c_str()),
      name);
}

inline Result SaveRaw(const Frame& frame, const std::filesystem::path& path) {
  if (Result result = detail::CheckFrame(frame); !result) return result;
  const std::string name = path.string();
  return detail::OfFile(
      SaveRWH(frame.bytes.data(), frame.format.code, frame.width, frame.height, name.c_str()), name);
}

/** A frame of a raw frame file; owns its bytes. */
class LoadedFrame {
 public:
  LoadedFrame() = default;

  Format GetFormat() const noexcept { return format_; }
  std::uint32_t Width() const noexcept { return width_; }
  std::uint32_t Height() const noexcept { return height_; }
  std::span<std::uint8_t> Data() const noexcept {
    return {data_.get(), data_ ? FrameBytes(format_, width_, height_) : 0};
  }
  operator Frame() const noexcept { return {format_, width_, height_, Data()}; }

  /** Loads a whole frame, or reports what is wrong with the file. */
  static Result Load(const std::filesystem::path& path, LoadedFrame& frame) {
    const std::string name = path.string();
    std::uint32_t code = 0, width = 0, height = 0, row_bytes = 0;
    // Without a buffer, the header alone.
    const std::uint32_t status = LoadRWH(name.c_str(), nullptr, &code, &width, &height, &row_bytes);
    if (status != UTL_STS_INVALID_PARAMETER) return detail::OfFile(status, name);
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error) return Result(Errc::kFileOpenError, name);  // a folder
    constexpr std::uint64_t kHeaderBytes = 16;
    if (size < kHeaderBytes) return Result(Errc::kFileTooShort, size, kHeaderBytes).About(name);
    const Format format{code};
    if (Result result = detail::CheckSize(format, width, height); !result) return result.About(name);
    if (row_bytes != format.RowBytes(width))
      return Result(Errc::kRowSizeMismatch, row_bytes, format.RowBytes(width)).About(name);
    const std::uint64_t needed = kHeaderBytes + FrameBytes(format, width, height);
    if (size < needed) return Result(Errc::kFileTooShort, size, needed).About(name);

    std::uint8_t* data = nullptr;
    const Result result =
        detail::OfFile(LoadRWH(name.c_str(), &data, nullptr, nullptr, nullptr, nullptr), name);
    frame.data_.reset(data);
    frame.format_ = format;
    frame.width_ = width;
    frame.height_ = height;
    return result;
  }

  /** As above; throws Error. */
  static LoadedFrame Load(const std::filesystem::path& path) {
    LoadedFrame frame;
    Load(path, frame).OrThrow();
    return frame;
  }

 private:
  struct Free {
    void operator()(std::uint8_t* data) const noexcept { FreeRWH(data); }
  };
  std::unique_ptr<std::uint8_t, Free> data_;
  Format format_;
  std::uint32_t width_ = 0, height_ = 0;
};

/* ---------------------------------------------------------------------------------------------- */
/* The worker pool */

namespace detail {

// A work and what its callback needs, for as long as a worker can be in it.
class Task {
 public:
  virtual ~Task() = default;

  Result Wait() {
    std::call_once(waited_, [this] {
      if (work_) result_ = Result::OfStatus(WaitWorkDone(work_));
      left_ = result_ != Errc::kTimeout;
    });
    if (thrown_ && result_ == Errc::kFailure) std::rethrow_exception(thrown_);
    return result_;
  }

  // No worker is in the task any more.
  bool IsLeft() const noexcept { return left_; }

  void Start(std::uint32_t height) {
    // The workers find the task where others find their images. Shrinking blocks, to end at the same time.
    StartWork(&work_, &Task::Callback, 0, height - 1, 0, 0, 0, 0, this, 1, height, 1, 1, this, 1, height, 1,
              1, 0, 0, 1);
    if (work_ == nullptr) result_ = Errc::kFailure;
  }

  virtual void Rows(std::uint32_t first, std::uint32_t count) = 0;

 private:
  static void Callback(MPWork* work) {
    Task& task = *reinterpret_cast<Task*>(work->Dst);
    try {
      std::int32_t first_row = 0, rows = 0;
      for (std::int32_t first = 1; MPWorkTakeBlock(work, first, &first_row, &rows); first = 0)
        task.Rows(static_cast<std::uint32_t>(first_row), static_cast<std::uint32_t>(rows));
    } catch (...) {
      std::call_once(task.threw_, [&task] { task.thrown_ = std::current_exception(); });
      throw;  // the engine ends the work with UTL_STS_FAILURE
    }
  }

  MPWork* work_ = nullptr;
  Result result_;
  std::atomic<bool> left_ = false;
  std::once_flag waited_, threw_;
  std::exception_ptr thrown_;
};

template <class F>
class TaskOf final : public Task {
 public:
  template <class G>
  explicit TaskOf(G&& rows) : rows_(std::forward<G>(rows)) {}
  void Rows(std::uint32_t first, std::uint32_t count) override { rows_(first, count); }

 private:
  F rows_;
};

}  // namespace detail

/** A work that Pool::Start has started. Waits when it is destroyed. */
class Work {
 public:
  Work(Work&&) noexcept = default;
  Work& operator=(Work&&) = delete;
  ~Work() {
    try {
      if (task_) static_cast<void>(task_->Wait());
    } catch (...) {  // for those who call Wait
    }
  }

  /** Waits until all rows are done; throws what the function threw. */
  Result Wait() { return task_ ? task_->Wait() : result_; }

 private:
  friend class Pool;
  explicit Work(Result result) : result_(std::move(result)) {}
  explicit Work(std::shared_ptr<detail::Task> task) : task_(std::move(task)) {}

  std::shared_ptr<detail::Task> task_;
  Result result_;
};

/**
 * The worker pool of the process for as long as this lives: at its end the threads are gone. One at a time,
 * and no conversion on the pool beside its end. Without a Pool, the first call that needs the pool starts it.
 */
class Pool {
 public:
  /** Below 1: one thread less than there are processors. */
  explicit Pool(int threads = 0) noexcept { StartMPThreads(threads); }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() { Close(); }

  /** Waits for started works, then for the threads. Buffers of works that timed out are free afterwards. */
  void Close() noexcept {
    if (!open_) return;
    open_ = false;
    for (const auto& task : tasks_) {
      try {
        static_cast<void>(task->Wait());
      } catch (...) {  // for those who hold the Work
      }
    }
    TerminateMPThreads();
    tasks_.clear();
  }

  bool IsOpen() const noexcept { return open_; }
  int Threads() const noexcept { return open_ ? GetMPCount() : 0; }

  /** How long a call waits for the pool. A negative time: for ever. */
  Result SetTimeout(std::chrono::milliseconds timeout) noexcept {
    if (!open_) return Errc::kPoolClosed;
    const auto msec = std::clamp<std::int64_t>(timeout.count(), -1, 0xFFFFFFFF);
    return Result::OfStatus(SetMPTimeout_msec(static_cast<std::uint32_t>(msec)));
  }

  Result SetPriority(int priority) noexcept {
    if (!open_) return Errc::kPoolClosed;
    if (priority < -2 || priority > 2) {
      return {Errc::kPriorityOutOfRange, static_cast<std::uint64_t>(priority),
              static_cast<std::uint64_t>(priority < 0 ? -2 : 2)};
    }
    return Result::OfStatus(SetMPThreadPriority(priority));
  }

  /**
   * Calls `rows(first, count)` for blocks of rows on all threads until the rows 0 to `height` - 1 are done;
   * throws what it threw. After a time-out some have not been done, and what `rows` refers to has to stay
   * until the pool is closed.
   */
  template <class F>
  Result ForRows(std::uint32_t height, F rows) {
    return Start(height, std::move(rows)).Wait();
  }

  /** As ForRows, without waiting. A few rows are done at once. */
  template <class F>
  Work Start(std::uint32_t height, F rows) {
    if (!open_) return Work(Errc::kPoolClosed);
    if (height < detail::kMinPoolRows) {
      if (height) rows(0u, height);
      return Work(Result());
    }
    auto task = std::make_shared<detail::TaskOf<F>>(std::move(rows));
    {
      const std::lock_guard lock(lock_);
      std::erase_if(tasks_, [](const auto& other) { return other->IsLeft(); });
      tasks_.push_back(task);
    }
    task->Start(height);
    return Work(std::move(task));
  }

 private:
  bool open_ = true;
  std::mutex lock_;  // guards tasks_
  std::vector<std::shared_ptr<detail::Task>> tasks_;
};

}  // namespace prismoutl

template <>
struct std::is_error_code_enum<prismoutl::Errc> : std::true_type {};

#endif  // PRISMOUTL_HPP_

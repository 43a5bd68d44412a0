// One call of a conversion that arbitrary bytes choose: the function, its arguments, the instruction set,
// where the buffers lie and what they hold. The result is compared with the reference, and the buffers are
// exactly as large as the call may touch.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "reference/mirror.h"
#include "reference/synthesis.h"
#include "simd/targets.h"
#include "support/guarded_buffer.h"
#include "support/routines.h"

namespace prismo::test {

// What is left of an input; zeros when it is used up.
class FuzzInput {
 public:
  FuzzInput(const uint8_t* data, size_t size) : rest_(data, size) {}

  uint8_t Byte() {
    if (rest_.empty()) return 0;
    const uint8_t byte = rest_.front();
    rest_ = rest_.subspan(1);
    return byte;
  }
  uint32_t Below(uint32_t bound) { return (Byte() | uint32_t{Byte()} << 8) % bound; }
  bool Flag() { return Byte() & 1; }

  // Contents of a buffer: what is left, again and again.
  std::vector<uint8_t> Fill(size_t count) const {
    std::vector<uint8_t> bytes(count);
    for (size_t i = 0; i < count && !rest_.empty(); ++i) {
      bytes[i] = static_cast<uint8_t>(rest_[i % rest_.size()] + i / rest_.size());
    }
    return bytes;
  }

 private:
  std::span<const uint8_t> rest_;
};

class FuzzConversion {
 public:
  static void Run(const uint8_t* data, size_t size) {
    FuzzConversion call(data, size);
    const simd::Target before = simd::CurrentTarget();
    const auto& targets = simd::SupportedTargets();
    simd::SetTarget(targets[call.in_.Below(static_cast<uint32_t>(std::size(targets)))]);
    simd::SetStoreKind(call.in_.Flag() ? simd::StoreKind::kStreaming : simd::StoreKind::kCached);
    call.place_ = call.in_.Below(1000);
    call.width_ = call.in_.Below(300);
    call.height_ = call.in_.Below(24);
    using Family = void (FuzzConversion::*)();
    constexpr Family kFamilies[] = {
        &FuzzConversion::Bilinear, &FuzzConversion::Adaptive, &FuzzConversion::Mono,
        &FuzzConversion::Packed,   &FuzzConversion::Yuv,      &FuzzConversion::Mirror,
        &FuzzConversion::Raw,      &FuzzConversion::Bayer,    &FuzzConversion::Generic};
    (call.*kFamilies[call.in_.Below(std::size(kFamilies))])();
    simd::SetTarget(before);
    simd::SetStoreKind(std::nullopt);
  }

 private:
  using Output = reference::Output;
  using Call = std::function<uint32_t(void* dst, const void* src)>;

  FuzzConversion(const uint8_t* data, size_t size) : in_(data, size) {}

  template <class R>
  const R& Choose(const std::vector<R>& routines) {
    return routines[in_.Below(static_cast<uint32_t>(routines.size()))];
  }

  Output ChooseOutput(bool bgra) {
    pad_ = in_.Flag() ? in_.Byte() : 0;
    return bgra ? Output::kBgra : pad_ ? Output::kPad : Output::kBgr;
  }

  // Calls the reference, which may refuse, and the library.
  void Compare(const std::string& name, size_t src_bytes, size_t sample_bytes, size_t dst_bytes,
               const Call& expected_of, const Call& library) {
    const std::vector<uint8_t> content = in_.Fill(src_bytes);
    std::vector<uint8_t> expected(dst_bytes, 0xA5);
    const uint32_t status = expected_of(expected.data(), content.data());

    const GuardedBuffer src(content, Placement::Nth(place_, sample_bytes));
    GuardedBuffer dst(std::vector<uint8_t>(dst_bytes, 0xA5), Placement::Nth(place_ * 5 + place_ / 8));
    const uint32_t actual = library(dst.data(), src.data());
    const auto complain = [&](const char* what) {
      std::fprintf(stderr, "%s %u x %u, pad %u, shift %u, on %s: %s\n", name.c_str(), width_, height_, pad_,
                   shift_, simd::Name(simd::CurrentTarget()), what);
      std::abort();
    };
    if (actual != status) complain("another status");
    if (!std::equal(expected.begin(), expected.end(), dst.data())) complain("other bytes");
    if (!std::equal(content.begin(), content.end(), src.data())) complain("the source has changed");
    if (!dst.CanariesIntact() || !src.CanariesIntact()) complain("writes outside its buffers");
  }

  // Rows that pools of one thread hand out whole.
  bool PoolTakes(uint32_t rows) const { return rows >= 2 && rows % 2 == 0; }

  template <class Reference, class Pooled>
  void Demosaic(const BayerRoutine& routine, uint32_t border, Reference&& reference, Pooled&& pooled) {
    const bool pool = routine.on == On::kPool;
    if (pool && height_ > 0 && (height_ <= border || !PoolTakes(height_ - border))) return;
    const Output output = ChooseOutput(routine.bgra);
    shift_ = in_.Byte();
    const size_t sample_bytes = routine.words ? 2 : 1;
    Compare(
        routine.name, sample_bytes * width_ * height_, sample_bytes,
        reference::Picture::Bytes(output, width_, height_),
        [&](void* dst, const void* src) {
          if (width_ * height_ == 0) return UTL_STS_SUCCESS;
          if (width_ % 2 || height_ % 2) return UTL_STS_INVALID_PARAMETER;
          const reference::Mosaic mosaic{src, width_, height_, routine.source, routine.words, shift_};
          if (pool) return pooled(mosaic, output, dst, 1);
          reference(mosaic, output, dst);
          return UTL_STS_SUCCESS;
        },
        [&](void* dst, const void* src) { return routine.call(dst, src, width_, height_, shift_, pad_); });
  }

  void Bilinear() { Demosaic(Choose(BilinearRoutines()), 2, reference::Bilinear, reference::PooledBilinear); }

  void Adaptive() {
    const auto adaptive = [](const reference::Mosaic& mosaic, Output output, void* dst) {
      reference::Adaptive(mosaic, output, dst);
    };
    Demosaic(Choose(AdaptiveRoutines()), 4, adaptive, reference::PooledAdaptive);
  }

  void Mono() { Pixels(Choose(MonoRoutines())); }
  void Packed() { Pixels(Choose(PackedRoutines())); }

  void Pixels(const PackedRoutine& routine) {
    using Order = reference::PackedFrame::Order;
    const bool pool = routine.on == On::kPool;
    if (pool && height_ > 0 && !PoolTakes(height_)) return;
    const Output output = ChooseOutput(routine.bgra);
    shift_ = in_.Byte();
    // Words beyond the table of the pool's grey form have no defined value.
    if (pool && routine.source == Order::kGrey && routine.words && routine.bgra) shift_ = 8;
    const size_t samples = routine.source == Order::kGrey ? 1 : routine.source == Order::kBgra ? 4 : 3;
    const size_t sample_bytes = routine.words ? 2 : 1;
    const bool copy = routine.source == Order::kBgr && !routine.words && !routine.bgra &&
                      (output == Output::kBgr || reference::PadBytes(3 * width_) == 0);
    Compare(
        routine.name, samples * sample_bytes * width_ * height_, sample_bytes,
        reference::Picture::Bytes(output, width_, height_),
        [&](void* dst, const void* src) {
          if (width_ * height_ == 0) return UTL_STS_SUCCESS;
          const reference::PackedFrame frame{src, width_, routine.words, shift_, routine.source};
          if (pool && !copy) return reference::PooledConvert(frame, output, dst, height_, 1);
          reference::Convert(frame, output, dst, height_);
          return UTL_STS_SUCCESS;
        },
        [&](void* dst, const void* src) { return routine.call(dst, src, width_, height_, shift_, pad_); });
  }

  void Yuv() {
    const YuvRoutine& routine = Choose(YuvRoutines());
    const bool pool = routine.on == On::kPool;
    if (pool && height_ > 0 && !PoolTakes(height_)) return;
    width_ -= width_ % reference::GroupPixels(routine.source);
    const Output output = ChooseOutput(routine.bgra);
    PrepareLUT();
    Compare(
        routine.name, size_t{reference::YuvRowBytes(routine.source, width_)} * height_, 1,
        reference::Picture::Bytes(output, width_, height_),
        [&](void* dst, const void* src) {
          if (width_ * height_ == 0) return UTL_STS_SUCCESS;
          if (pool) return reference::PooledConvertYuv(routine.source, output, dst, src, width_, height_, 1);
          reference::ConvertYuv(routine.source, output, dst, src, width_, height_);
          return UTL_STS_SUCCESS;
        },
        [&](void* dst, const void* src) { return routine.call(dst, src, width_, height_, 0, pad_); });
  }

  void Mirror() {
    const std::vector<uint32_t> formats = reference::MirrorFormats();
    const uint32_t format = Choose(formats);
    const reference::MirrorUnit& unit = *reference::MirrorUnitOf(format);
    width_ -= width_ % unit.pixels;
    const bool horizontal = in_.Flag(), vertical = in_.Flag(), pool = in_.Flag();
    if (pool && !PoolTakes(height_)) return;
    const size_t bytes = size_t{reference::MirrorRowBytes(unit, width_)} * height_;
    Compare(
        "mirror of " + std::to_string(format), bytes, 1, bytes,
        [&](void* dst, const void* src) {
          if (bytes > 0) reference::Mirror(unit, dst, src, width_, height_, horizontal, vertical);
          return UTL_STS_SUCCESS;
        },
        [&](void* dst, const void* src) {
          return (pool ? RvrsImg_MP : RvrsImg_SP)(dst, src, format, width_, height_, horizontal, vertical);
        });
  }

  void Raw() {
    static const std::vector<uint32_t> targets = {PRISMO_MONO8,  PRISMO_MONO10, PRISMO_MONO12, PRISMO_MONO16,
                                                  PRISMO_YUV411, PRISMO_YUV422, PRISMO_YUV444};
    const uint32_t target = Choose(targets);
    const bool bgra = in_.Flag();
    pad_ = in_.Flag();
    width_ = std::max(width_ - width_ % 4, 4u);
    height_ = std::max(height_, 1u);
    const uint32_t pixel_bytes = bgra ? 4 : 3;
    const size_t row = size_t{pixel_bytes} * width_;
    const size_t pitch = pad_ ? (row + 3) / 4 * 4 : row;
    Compare(
        "ToRaw " + std::to_string(target), pitch * height_, 1, reference::RawBytes(target, width_, height_),
        [&](void* dst, const void* src) {
          reference::MakeRaw(target, dst, src, pixel_bytes, width_, height_, pad_);
          return UTL_STS_SUCCESS;
        },
        [&](void* dst, const void* src) {
          return ToRaw(dst, src, target, bgra ? PRISMO_BGRA8 : PRISMO_BGR8, width_, height_, pad_);
        });
  }

  void Bayer() {
    struct Form {
      uint32_t (*function)(void*, const void*, const int32_t*, int32_t, uint32_t, int32_t, uint8_t) noexcept;
      reference::BayerDepths depths;
    };
    static const std::vector<Form> forms = {{ToBayer8to8, {8, 8}},     {ToBayer8to10, {8, 10}},
                                            {ToBayer8to12, {8, 12}},   {ToBayer10to8, {10, 8}},
                                            {ToBayer10to10, {10, 10}}, {ToBayer10to12, {10, 12}}};
    const Form& form = Choose(forms);
    width_ = std::max(width_ & ~1u, 2u);
    height_ = std::max(height_ & ~1u, 2u);
    pad_ = in_.Flag();
    const uint32_t samples = 3 + in_.Below(2);
    int32_t channels[4];
    for (int32_t& channel : channels) channel = static_cast<int32_t>(in_.Below(samples));
    const size_t sample_bytes = form.depths.from > 8 ? 2 : 1;
    const size_t row = size_t{width_} * samples * sample_bytes;
    const size_t pitch = pad_ ? (row + 3) / 4 * 4 : row;
    Compare(
        "ToBayer", pitch * (height_ - 1) + row, sample_bytes,
        size_t{form.depths.to > 8 ? 2u : 1u} * width_ * height_,
        [&](void* dst, const void* src) {
          reference::MakeBayer(form.depths, dst, src, channels, width_, height_, samples, pad_);
          return UTL_STS_SUCCESS;
        },
        [&](void* dst, const void* src) {
          return form.function(dst, src, channels, static_cast<int32_t>(width_), height_,
                               static_cast<int32_t>(samples), pad_);
        });
  }

  // Any code, type, method: an answer that there is, and nothing outside buffers that suit every format. Only
  // frames of whole groups and of rows enough for the pool.
  void Generic() {
    static const std::vector<uint32_t> formats = {PRISMO_MONO8,       PRISMO_MONO10,
                                                  PRISMO_MONO12,      PRISMO_MONO16,
                                                  PRISMO_BAYER_GR8,   PRISMO_BAYER_RG8,
                                                  PRISMO_BAYER_GB8,   PRISMO_BAYER_BG8,
                                                  PRISMO_BAYER_GR10,  PRISMO_BAYER_RG12,
                                                  PRISMO_RGB8,        PRISMO_BGR8,
                                                  PRISMO_RGB10,       PRISMO_BGR12,
                                                  PRISMO_YUV411,      PRISMO_YUV422,
                                                  PRISMO_YUV444,      PRISMO_BGRA8,
                                                  PRISMO_BGRA10,      PRISMO_MONO8_PADDED,
                                                  PRISMO_BGR8_PADDED, 0,
                                                  0xFFFFFFFF};
    uint32_t format = Choose(formats);
    if (in_.Flag()) format ^= 1u << in_.Below(32);
    width_ -= width_ % 4;
    height_ = height_ % 2 ? 0 : height_ + 6;
    const uint32_t type = in_.Below(18), method = in_.Below(10);
    const bool pool = in_.Flag(), by_settings = in_.Flag();
    SetBayerConvMode(static_cast<int32_t>(method));
    SetProcMode(pool);
    const size_t pixels = size_t{width_} * height_;
    const GuardedBuffer src(in_.Fill(8 * pixels), Placement::Nth(place_, 2));
    GuardedBuffer dst(4 * pixels, Placement::Nth(place_ * 5));
    const uint32_t status =
        by_settings ? ConvImage(type, format, method & 1, dst.data(), src.data(), width_, height_)
                    : ConvImageEx(type, format, dst.data(), src.data(), width_, height_, method, pool);
    if (status != UTL_STS_SUCCESS && status != UTL_STS_INVALID_PARAMETER) std::abort();
    if (!src.CanariesIntact() || !dst.CanariesIntact()) std::abort();
  }

  FuzzInput in_;
  uint32_t width_ = 0, height_ = 0;
  uint8_t shift_ = 0, pad_ = 0;
  size_t place_ = 0;
};

}  // namespace prismo::test

// One call of an exported conversion that arbitrary bytes choose: the function, its arguments and the
// settings that it reads, where the buffers lie and what they hold. The result of every instruction set is
// compared with the reference, and the buffers are exactly as large as the call may touch.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "reference/mirror.h"
#include "reference/row_split.h"
#include "reference/synthesis.h"
#include "simd/stores.h"
#include "simd/targets.h"
#include "support/dispatch_tables.h"
#include "support/formats.h"
#include "support/guarded_buffer.h"
#include "support/planes_routines.h"
#include "support/rectangle_routines.h"
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

  template <class Choices>
  const auto& Choose(const Choices& choices) {
    return choices[Below(static_cast<uint32_t>(std::size(choices)))];
  }

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
    call.function_->call(call);
  }

  // The exported functions that inputs call.
  static std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const Function& function : Functions()) names.push_back(function.name);
    return names;
  }

  static std::string NameIn(const std::vector<uint8_t>& input) {
    return FuzzConversion(input.data(), input.size()).function_->name;
  }

  // The first bytes of an input that calls a function of Names().
  static std::vector<uint8_t> StartOf(size_t function, uint8_t place, uint8_t width, uint8_t height) {
    return {
        place, 0, width, 0, height, 0, static_cast<uint8_t>(function), static_cast<uint8_t>(function >> 8)};
  }

 private:
  using Output = reference::Output;
  using Call = std::function<uint32_t(void* dst, const void* src)>;
  using Destinations = std::vector<uint8_t*>;
  using CallOfSeveral = std::function<uint32_t(const Destinations& dst, const void* src)>;

  struct Function {
    std::string name;
    std::function<void(FuzzConversion&)> call;
  };

  FuzzConversion(const uint8_t* data, size_t size) : in_(data, size) {
    place_ = in_.Below(1000);
    width_ = in_.Below(300);
    height_ = in_.Below(24);
    function_ = &in_.Choose(Functions());
  }

  static const std::vector<Function>& Functions() {
    static const std::vector<Function> functions = [] {
      std::vector<Function> all;
      for (const auto& [name, check] : RoutineChecks()) {
        all.push_back({name, [&name = name, &check = check](FuzzConversion& c) {
                         c.ChooseArguments();
                         check(c, RoutineNamed(name));
                       }});
      }
      for (const Converter& converter : kConverters) {
        all.push_back({converter.name, [&converter](FuzzConversion& c) { c.Convert(converter); }});
      }
      for (const ShiftConverter& converter : kShiftConverters) {
        all.push_back({converter.name, [&converter](FuzzConversion& c) { c.ConvertShifted(converter); }});
      }
      for (const RectangleRoutine& r : RectangleRoutines()) {
        all.push_back({r.name, [&r](FuzzConversion& c) {
                         const bool pool = r.on == On::kPool;
                         c.Rectangle(r.phase, PhaseOf::kRectangle, c.ChooseOutput(r.bgra), pool, r.call);
                       }});
      }
      for (const RectangleConverter& r : RectangleConverters()) {
        all.push_back({r.name, [&r](FuzzConversion& c) {
                         const bool pool = c.in_.Flag();
                         c.Rectangle(r.phase, PhaseOf::kFrame, c.ChooseOutput(r.bgra), pool, r.call);
                       }});
      }
      for (const BayerPlanesRoutine& r : BayerPlanesRoutines()) {
        all.push_back({r.name, [&r](FuzzConversion& c) {
                         c.ChooseArguments();
                         c.BayerPlanes(r, r.call);
                       }});
      }
      for (const PackedPlanesRoutine& r : PackedPlanesRoutines()) {
        all.push_back({r.name, [&r](FuzzConversion& c) {
                         c.ChooseArguments();
                         c.PackedPlanes(r, r.call);
                       }});
      }
      const std::vector<Function> others = {
          {"ConvImage", &FuzzConversion::BySettings},
          {"ConvImageEx", &FuzzConversion::ByType},
          {"ToBGRA", &FuzzConversion::ToBgra},
          {"ToBGR", &FuzzConversion::ToBgr},
          {"ConvImagePlanar", &FuzzConversion::PlanesBySettings},
          {"ConvImagePlanarEx", &FuzzConversion::PlanesByArguments},
          {"ConvertBayerFS", &FuzzConversion::PlanesOfBayer},
          {"ConvBayerRect_ACPI", &FuzzConversion::RectangleBySettings},
          {"ConvBayerRectEx_ACPI", &FuzzConversion::RectangleByArguments},
          {"MonoNToMono8", &FuzzConversion::MonoToMono},
          {"ReverseImg", &FuzzConversion::MirrorBySettings},
          {"RvrsImg_SP", [](FuzzConversion& c) { c.Mirror(false, RvrsImg_SP); }},
          {"RvrsImg_MP", [](FuzzConversion& c) { c.Mirror(true, RvrsImg_MP); }},
          {"ToRaw", &FuzzConversion::Raw},
          {"ToBayer8to8",
           [](FuzzConversion& c) {
             c.Bayer({8, 8}, ToBayer8to8);
           }},
          {"ToBayer8to10",
           [](FuzzConversion& c) {
             c.Bayer({8, 10}, ToBayer8to10);
           }},
          {"ToBayer8to12",
           [](FuzzConversion& c) {
             c.Bayer({8, 12}, ToBayer8to12);
           }},
          {"ToBayer10to8",
           [](FuzzConversion& c) {
             c.Bayer({10, 8}, ToBayer10to8);
           }},
          {"ToBayer10to10",
           [](FuzzConversion& c) {
             c.Bayer({10, 10}, ToBayer10to10);
           }},
          {"ToBayer10to12",
           [](FuzzConversion& c) {
             c.Bayer({10, 12}, ToBayer10to12);
           }},
      };
      all.insert(all.end(), others.begin(), others.end());
      return all;
    }();
    return functions;
  }

  // How the functions that do what a routine does are compared with the reference.
  using RoutineCheck = std::function<void(FuzzConversion&, const RoutineCall& call)>;

  static const std::map<std::string, RoutineCheck>& RoutineChecks() {
    static const std::map<std::string, RoutineCheck> checks = [] {
      std::map<std::string, RoutineCheck> all;
      for (const BayerRoutine& r : BilinearRoutines()) {
        all[r.name] = [&r](FuzzConversion& c, const RoutineCall& call) {
          c.Demosaic(r, 2, reference::Bilinear, reference::PooledBilinear, call);
        };
      }
      const auto adaptive = [](const reference::Mosaic& mosaic, Output output, void* dst) {
        reference::Adaptive(mosaic, output, dst);
      };
      for (const BayerRoutine& r : AdaptiveRoutines()) {
        all[r.name] = [&r, adaptive](FuzzConversion& c, const RoutineCall& call) {
          c.Demosaic(r, 4, adaptive, reference::PooledAdaptive, call);
        };
      }
      for (const auto* routines : {&MonoRoutines(), &PackedRoutines()}) {
        for (const PackedRoutine& r : *routines) {
          all[r.name] = [&r](FuzzConversion& c, const RoutineCall& call) { c.Pixels(r, call); };
        }
      }
      for (const YuvRoutine& r : YuvRoutines()) {
        all[r.name] = [&r](FuzzConversion& c, const RoutineCall& call) { c.Yuv(r, call); };
      }
      return all;
    }();
    return checks;
  }

  void CheckAs(const std::string& routine, const RoutineCall& call) {
    RoutineChecks().at(routine)(*this, call);
  }

  // The arguments of routines.
  void ChooseArguments() {
    pad_ = in_.Flag() ? in_.Byte() : 0;
    shift_ = in_.Byte();
  }

  Output OutputOf(bool bgra) const { return bgra ? Output::kBgra : pad_ ? Output::kPad : Output::kBgr; }

  Output ChooseOutput(bool bgra) {
    pad_ = in_.Flag() ? in_.Byte() : 0;
    return OutputOf(bgra);
  }

  int32_t ChooseMode() {
    const int32_t mode = in_.Choose(kModes);
    SetProcMode(mode);
    return mode;
  }

  uint32_t ChooseFormat() {
    const uint32_t format = in_.Choose(AllFormats()).code;
    return in_.Below(8) == 0 ? format ^ 1u << in_.Below(32) : format;
  }

  bool Empty() const { return width_ * height_ == 0; }

  // Calls the reference, which may refuse, and the library on every instruction set.
  void CompareAll(const std::vector<uint8_t>& content, size_t sample_bytes,
                  const std::vector<size_t>& dst_bytes, const CallOfSeveral& expected_of,
                  const CallOfSeveral& library) {
    std::vector<std::vector<uint8_t>> before, expected;
    Destinations expected_dst;
    for (const size_t bytes : dst_bytes) before.emplace_back(bytes, uint8_t{0xA5});
    expected = before;
    for (std::vector<uint8_t>& bytes : expected) expected_dst.push_back(bytes.data());
    const uint32_t status = expected_of(expected_dst, content.data());

    const simd::Target target_before = simd::CurrentTarget();
    simd::SetSeveralPlaces(true);
    for (const simd::Target target : simd::SupportedTargets()) {
      simd::SetTarget(target);
      constexpr size_t kPiecePixels = 48;  // so that small frames have several
      simd::SetStores(simd::StorePlan::Streaming(place_++ % 3 * simd::StorePlan::kParts / 2, kPiecePixels));
      simd::SetCrossingLoads(place_ / 2 % 2 != 0);
      const GuardedBuffer src(content, Placement::Nth(place_, sample_bytes));
      std::vector<std::unique_ptr<GuardedBuffer>> buffers;
      Destinations dst;
      for (const std::vector<uint8_t>& bytes : before) {
        buffers.push_back(std::make_unique<GuardedBuffer>(
            bytes, Placement::Nth(place_ * (5 + 2 * dst.size()) + place_ / 8)));
        dst.push_back(buffers.back()->data());
      }
      if (library(dst, src.data()) != status) Complain("another status");
      for (size_t i = 0; i < buffers.size(); ++i) {
        if (!std::ranges::equal(expected[i], buffers[i]->bytes())) Complain("other bytes");
        if (!buffers[i]->CanariesIntact()) Complain("writes outside its buffers");
      }
      if (!std::ranges::equal(content, src.bytes())) Complain("the source has changed");
      if (!src.CanariesIntact()) Complain("writes beside the source");
    }
    simd::SetTarget(target_before);
    simd::SetStores(std::nullopt);
    simd::SetSeveralPlaces(std::nullopt);
    simd::SetCrossingLoads(std::nullopt);
  }

  void Compare(const std::vector<uint8_t>& content, size_t sample_bytes, size_t dst_bytes,
               const Call& expected_of, const Call& library) {
    const auto only = [](const Call& call) {
      return [&call](const Destinations& dst, const void* src) { return call(dst[0], src); };
    };
    CompareAll(content, sample_bytes, {dst_bytes}, only(expected_of), only(library));
  }

  [[noreturn]] void Complain(const char* what) const {
    std::fprintf(stderr, "%s %u x %u, pad %u, shift %u, on %s: %s\n", function_->name.c_str(), width_,
                 height_, pad_, shift_, simd::Name(simd::CurrentTarget()), what);
    std::abort();
  }

  // Nothing of any buffer is touched.
  void Refuse(uint32_t status, const RoutineCall& call) {
    Compare(
        {}, 1, 0, [&](void*, const void*) { return status; }, AsCall(call));
  }

  Call AsCall(const RoutineCall& call) const {
    return
        [this, &call](void* dst, const void* src) { return call(dst, src, width_, height_, shift_, pad_); };
  }

  // Adds rows until a pool of one thread hands out all but `border` of them; a call with fewer would wait for
  // the whole time-out.
  void GrowForThePool(uint32_t border, uint32_t step) {
    while (!reference::SplitRows(0, static_cast<int32_t>(height_ - border) - 1, 1, 2).finishes)
      height_ += step;
  }

  template <class Reference, class Pooled>
  void Demosaic(const BayerRoutine& routine, uint32_t border, Reference&& reference, Pooled&& pooled,
                const RoutineCall& call) {
    const bool pool = routine.on == On::kPool;
    if (pool && height_ > 0 && height_ % 2 == 0) GrowForThePool(border, 2);
    const Output output = OutputOf(routine.bgra);
    const size_t sample_bytes = routine.words ? 2 : 1;
    Compare(
        in_.Fill(sample_bytes * width_ * height_), sample_bytes,
        reference::Picture::Bytes(output, width_, height_),
        [&](void* dst, const void* src) {
          if (Empty()) return UTL_STS_SUCCESS;
          if (width_ % 2 || height_ % 2) return UTL_STS_INVALID_PARAMETER;
          const reference::Mosaic mosaic{src, width_, height_, routine.source, routine.words, shift_};
          if (pool) return pooled(mosaic, output, dst, 1);
          reference(mosaic, output, dst);
          return UTL_STS_SUCCESS;
        },
        AsCall(call));
  }

  void Pixels(const PackedRoutine& routine, const RoutineCall& call) {
    using Order = reference::PackedFrame::Order;
    const bool pool = routine.on == On::kPool;
    if (pool && height_ > 0) GrowForThePool(0, 1);
    const Output output = OutputOf(routine.bgra);
    const size_t samples = routine.source == Order::kGrey ? 1 : routine.source == Order::kBgra ? 4 : 3;
    const size_t sample_bytes = routine.words ? 2 : 1;
    std::vector<uint8_t> content = in_.Fill(samples * sample_bytes * width_ * height_);
    // Words beyond the table of the pool's grey form have no defined value.
    if (pool && routine.source == Order::kGrey && routine.words && routine.bgra && shift_ % 32 < 8) {
      for (size_t i = 1; i < content.size(); i += 2)
        content[i] &= static_cast<uint8_t>((1 << shift_ % 32) - 1);
    }
    const bool copy = routine.source == Order::kBgr && !routine.words && !routine.bgra &&
                      (output == Output::kBgr || reference::PadBytes(3 * width_) == 0);
    Compare(
        content, sample_bytes, reference::Picture::Bytes(output, width_, height_),
        [&](void* dst, const void* src) {
          if (Empty()) return UTL_STS_SUCCESS;
          const reference::PackedFrame frame{src, width_, routine.words, shift_, routine.source};
          if (pool && !copy) return reference::PooledConvert(frame, output, dst, height_, 1);
          reference::Convert(frame, output, dst, height_);
          return UTL_STS_SUCCESS;
        },
        AsCall(call));
  }

  void Yuv(const YuvRoutine& routine, const RoutineCall& call) {
    const bool pool = routine.on == On::kPool;
    if (pool && height_ > 0) GrowForThePool(0, 1);
    width_ -= width_ % reference::GroupPixels(routine.source);
    const Output output = OutputOf(routine.bgra);
    PrepareLUT();
    Compare(
        in_.Fill(size_t{reference::YuvRowBytes(routine.source, width_)} * height_), 1,
        reference::Picture::Bytes(output, width_, height_),
        [&](void* dst, const void* src) {
          if (Empty()) return UTL_STS_SUCCESS;
          if (pool) return reference::PooledConvertYuv(routine.source, output, dst, src, width_, height_, 1);
          reference::ConvertYuv(routine.source, output, dst, src, width_, height_);
          return UTL_STS_SUCCESS;
        },
        AsCall(call));
  }

  void Convert(const Converter& converter) { ConvertInMode(converter, ChooseMode(), Plain(converter.call)); }

  void ConvertInMode(const Converter& converter, int32_t mode, const RoutineCall& call) {
    shift_ = converter.shift;
    pad_ = converter.pad;
    CheckAs(OnPool(converter.pool, mode) ? converter.on_pool : converter.on_caller, call);
  }

  void ConvertShifted(const ShiftConverter& converter) {
    const int32_t mode = ChooseMode();
    shift_ = in_.Byte();
    CheckAs(OnPool(converter.pool, mode) ? converter.on_pool : converter.on_caller, Shifted(converter.call));
  }

  static bool HasPaddedRows(uint32_t format) {
    return format == PRISMO_BGR8_PADDED || format == PRISMO_MONO8_PADDED;
  }

  // As ConvImageEx: the routine behind an output type, a format, a method and a choice of threads.
  void CheckRoute(uint32_t type, uint32_t format, uint32_t method, bool pool, const RoutineCall& call) {
    static const std::vector<Route> bgra_routes = Routes(true), bgr_routes = Routes(false);
    if (type >= 8 && type <= 15) return Refuse(UTL_STS_INVALID_PARAMETER, call);
    const bool bgra = type != 1 && type != 2;
    pad_ = type == 2;
    if (HasPaddedRows(format)) return PaddedRows(format, OutputOf(bgra), call);
    for (const Route& route : bgra ? bgra_routes : bgr_routes) {
      if (route.format != format || route.method != (method == 1 || method == 8 ? method : 0)) continue;
      shift_ = route.shift;
      return CheckAs(pool ? route.on_pool : route.on_caller, call);
    }
    Refuse(UTL_STS_INVALID_PARAMETER, call);
  }

  // Row by row on the caller's thread, pad bytes of the output left alone; but padded BGR to Pad is a copy.
  void PaddedRows(uint32_t format, Output output, const RoutineCall& call) {
    const bool mono = format == PRISMO_MONO8_PADDED;
    const size_t row_bytes = size_t{mono ? 1u : 3u} * width_, pitch = BytesOfRow(format, width_);
    Compare(
        in_.Fill(pitch * height_), 1, reference::Picture::Bytes(output, width_, height_),
        [&](void* dst, const void* src) {
          const auto* frame = static_cast<const uint8_t*>(src);
          std::vector<uint8_t> dense;
          for (uint32_t y = 0; y < height_; ++y) {
            dense.insert(dense.end(), frame + y * pitch, frame + y * pitch + row_bytes);
          }
          using Order = reference::PackedFrame::Order;
          reference::Convert({dense.data(), width_, false, 0, mono ? Order::kGrey : Order::kBgr}, output, dst,
                             height_);
          if (output != Output::kPad) return UTL_STS_SUCCESS;
          const reference::Picture picture(dst, output, width_);
          for (uint32_t y = 0; y < height_; ++y) {
            for (uint32_t i = 0; i < reference::PadBytes(3 * width_); ++i) {
              picture.At(width_, y)[i] = mono ? uint8_t{0xA5} : frame[y * pitch + row_bytes + i];
            }
          }
          return UTL_STS_SUCCESS;
        },
        AsCall(call));
  }

  void ByType() {
    const uint32_t type = in_.Below(18), format = ChooseFormat(), method = in_.Below(10);
    const uint8_t pool = in_.Flag() ? in_.Byte() : 0;
    CheckRoute(type, format, method, pool, [=](void* dst, const void* src, uint32_t w, uint32_t h, auto...) {
      return ConvImageEx(type, format, dst, src, w, h, method, pool);
    });
  }

  void ToBgra() {
    const uint32_t format = ChooseFormat(), method = in_.Below(10);
    const uint8_t pool = in_.Flag() ? in_.Byte() : 0, reserved = in_.Byte();
    CheckRoute(0, format, method, pool, [=](void* dst, const void* src, uint32_t w, uint32_t h, auto...) {
      return ToBGRA(dst, src, format, w, h, method, pool, reserved);
    });
  }

  void ToBgr() {
    const uint32_t format = ChooseFormat(), method = in_.Below(10);
    const uint8_t pool = in_.Flag() ? in_.Byte() : 0, pad = in_.Flag() ? in_.Byte() : 0;
    CheckRoute(pad ? 2 : 1, format, method, pool,
               [=](void* dst, const void* src, uint32_t w, uint32_t h, auto...) {
                 return ToBGR(dst, src, format, w, h, method, pool, pad);
               });
  }

  void BySettings() {
    const uint32_t type = in_.Below(18), format = ChooseFormat();
    const uint8_t demosaic = in_.Flag() ? in_.Byte() : 0;
    const auto bayer_mode = static_cast<int32_t>(in_.Below(11)) - 1;
    SetBayerConvMode(bayer_mode);
    const int32_t mode = ChooseMode();
    const RoutineCall call = [=](void* dst, const void* src, uint32_t w, uint32_t h, auto...) {
      return ConvImage(type, format, demosaic, dst, src, w, h);
    };
    if (type == 2 || (type == 1 ? format == PRISMO_BGR8_PADDED : HasPaddedRows(format))) {
      return CheckRoute(type, format, demosaic ? static_cast<uint32_t>(bayer_mode) : 8, mode != 0, call);
    }
    const PrismoConverter found =
        type == 1 ? GetBGRConverter(format, demosaic) : GetBGRAConverter(format, demosaic);
    if (!found) return Refuse(UTL_STS_INVALID_PARAMETER, call);
    if (format == PRISMO_BGRA8) return CheckAs(type == 1 ? "BGRA8ToBGR_SP" : "BGRA8ToBGRA_SP", call);
    ConvertInMode(*std::ranges::find(kConverters, found, &Converter::call), mode, call);
  }

  void CheckPlanes(size_t src_bytes,
                   const std::function<uint32_t(const reference::Planes&, const void*)>& expected,
                   const PlanesCall& call) {
    const size_t plane = reference::PlanePitch(width_, pad_) * height_;
    CompareAll(
        in_.Fill(src_bytes), 1, {plane, plane, plane},
        [&](const Destinations& dst, const void* src) {
          return Empty() ? UTL_STS_SUCCESS : expected({dst[0], dst[1], dst[2]}, src);
        },
        [&](const Destinations& dst, const void* src) {
          return call(dst[0], dst[1], dst[2], src, width_, height_, pad_);
        });
  }

  void BayerPlanes(const BayerPlanesRoutine& routine, const PlanesCall& call) {
    const bool pool = routine.on == On::kPool;
    if (pool && height_ > 1) GrowForThePool(2, 1);
    CheckPlanes(
        size_t{width_} * height_,
        [&](const reference::Planes& planes, const void* src) {
          if (width_ == 1 || height_ == 1) return UTL_STS_INVALID_PARAMETER;
          const reference::Mosaic mosaic{src, width_, height_, routine.phase};
          if (pool) return reference::PooledBayerPlanes(mosaic, pad_, planes, 1);
          reference::BayerPlanes(mosaic, pad_, planes);
          return UTL_STS_SUCCESS;
        },
        call);
  }

  void PackedPlanes(const PackedPlanesRoutine& routine, const PlanesCall& call) {
    const bool pool = routine.on == On::kPool;
    if (pool && height_ > 0) GrowForThePool(0, 1);
    CheckPlanes(
        size_t{3} * width_ * height_,
        [&](const reference::Planes& planes, const void* src) {
          const reference::PackedFrame frame{src, width_, false, 0, routine.order};
          if (pool) return reference::PooledSplit(frame, pad_, planes, height_, 1);
          reference::Split(frame, pad_, planes, height_);
          return UTL_STS_SUCCESS;
        },
        call);
  }

  static constexpr uint32_t kBayer8[] = {PRISMO_BAYER_BG8, PRISMO_BAYER_GB8, PRISMO_BAYER_GR8,
                                         PRISMO_BAYER_RG8};  // in the order of the reference's phases

  uint32_t ChoosePlanesFormat() {
    static constexpr uint32_t kFormats[] = {PRISMO_BAYER_BG8, PRISMO_BAYER_GB8, PRISMO_BAYER_GR8,
                                            PRISMO_BAYER_RG8, PRISMO_RGB8,      PRISMO_BGR8};
    return in_.Below(8) == 0 ? ChooseFormat() : in_.Choose(kFormats);
  }

  void CheckPlanesOf(uint32_t format, bool pool, const PlanesCall& call) {
    const On on = pool ? On::kPool : On::kCaller;
    for (const BayerPlanesRoutine& routine : BayerPlanesRoutines()) {
      if (routine.on == on && kBayer8[static_cast<size_t>(routine.phase)] == format) {
        return BayerPlanes(routine, call);
      }
    }
    for (const PackedPlanesRoutine& routine : PackedPlanesRoutines()) {
      const bool rgb = routine.order == reference::PackedFrame::Order::kRgb;
      if (routine.on == on && (rgb ? PRISMO_RGB8 : PRISMO_BGR8) == format) return PackedPlanes(routine, call);
    }
    RefusePlanes(call);
  }

  void RefusePlanes(const PlanesCall& call) {
    CompareAll(
        {}, 1, {0, 0, 0}, [](const Destinations&, const void*) { return UTL_STS_INVALID_PARAMETER; },
        [&](const Destinations& dst, const void* src) {
          return call(dst[0], dst[1], dst[2], src, width_, height_, pad_);
        });
  }

  void PlanesByArguments() {
    const uint32_t format = ChoosePlanesFormat();
    const uint8_t pool = in_.Flag() ? in_.Byte() : 0;
    pad_ = in_.Flag() ? in_.Byte() : 0;
    CheckPlanesOf(format, pool,
                  [=](void* b, void* g, void* r, const void* src, uint32_t w, uint32_t h, uint8_t pad) {
                    return ConvImagePlanarEx(format, b, g, r, src, w, h, pool, pad);
                  });
  }

  void PlanesBySettings() {
    const uint32_t format = ChoosePlanesFormat();
    CheckPlanesOf(format, ChooseMode() == 1,
                  [=](void* b, void* g, void* r, const void* src, uint32_t w, uint32_t h, uint8_t) {
                    return ConvImagePlanar(format, b, g, r, src, w, h);
                  });
  }

  void PlanesOfBayer() {
    const uint32_t format = ChoosePlanesFormat();
    const bool pool = ChooseMode() == 1;
    const PlanesCall call = [=](void* b, void* g, void* r, const void* src, uint32_t w, uint32_t h, uint8_t) {
      return ConvertBayerFS(format, b, g, r, src, w, h);
    };
    if (format == PRISMO_RGB8 || format == PRISMO_BGR8) return RefusePlanes(call);
    CheckPlanesOf(format, pool, call);
  }

  // Whose top left pixel a phase is of.
  enum class PhaseOf : uint8_t { kFrame, kRectangle };

  // Rectangles that fit; of half of them one argument is a little off.
  RectangleArguments ChooseRectangle(bool pool) {
    const auto even = [](uint32_t value) { return value + value % 2; };
    const auto beside = [&] { return in_.Below(8); };
    reference::Rectangle r{2 + beside(), 2 + beside(), even(width_), even(height_), 0, 0, beside(), beside()};
    if (pool) r.height = std::max(r.height, 4u);
    r.dst_width = r.dst_left + r.width + beside();
    r.dst_height = r.dst_top + r.height + beside();
    RectangleArguments a{even(r.left + r.width + 2 + beside()), even(r.top + r.height + 2 + beside()), r};
    uint32_t* const arguments[] = {&a.src_width,           &a.src_height,        &a.rectangle.left,
                                   &a.rectangle.top,       &a.rectangle.width,   &a.rectangle.height,
                                   &a.rectangle.dst_left,  &a.rectangle.dst_top, &a.rectangle.dst_width,
                                   &a.rectangle.dst_height};
    if (in_.Flag()) {
      uint32_t& argument = *in_.Choose(arguments);
      argument += in_.Below(7);
      argument -= std::min(argument, 3u);
    }
    return a;
  }

  static bool Accepted(const RectangleArguments& a) {
    const reference::Rectangle& r = a.rectangle;
    // A frame without pixels has much room: it is found to be empty later.
    return (a.src_width | a.src_height | r.width | r.height) % 2 == 0 && r.left >= 2 && r.top >= 2 &&
           r.left + r.width <= a.src_width - 2 && r.top + r.height <= a.src_height - 2 &&
           r.dst_left + r.width <= r.dst_width && r.dst_top + r.height <= r.dst_height;
  }

  void Rectangle(reference::Phase phase, PhaseOf phase_of, Output output, bool pool,
                 const RectangleCall& call) {
    const RectangleArguments a = ChooseRectangle(pool);
    const reference::Rectangle& r = a.rectangle;
    if (pool && r.height < 4) return;  // would wait for the whole time-out
    width_ = r.width, height_ = r.height;
    if (phase_of == PhaseOf::kRectangle) phase = reference::PhaseFrom(phase, r.left, r.top);
    Compare(
        in_.Fill(size_t{a.src_width} * a.src_height), 1,
        reference::Picture::Bytes(output, r.dst_width, r.dst_height),
        [&](void* dst, const void* src) {
          if (!Accepted(a)) return UTL_STS_INVALID_PARAMETER;
          const reference::Mosaic mosaic{src, a.src_width, a.src_height, phase};
          if (pool) return reference::PooledAdaptiveRectangle(mosaic, r, output, dst, 1);
          reference::AdaptiveRectangle(mosaic, r, output, dst);
          return UTL_STS_SUCCESS;
        },
        [&](void* dst, const void* src) { return call(dst, src, a, pad_, pool); });
  }

  using GenericRectangle = std::function<uint32_t(uint32_t kind, uint32_t format, void* dst, const void* src,
                                                  const RectangleArguments& a, bool pool)>;

  void RectangleOf(bool pool, const GenericRectangle& generic) {
    const uint32_t kind = in_.Below(5);
    const uint32_t format = in_.Below(8) == 0 ? ChooseFormat() : in_.Choose(kBayer8);
    const RectangleCall call = [=](void* dst, const void* src, const RectangleArguments& a, uint8_t,
                                   uint8_t) { return generic(kind, format, dst, src, a, pool); };
    pad_ = kind == 2;
    const auto* found = std::ranges::find(kBayer8, format);
    if (found != std::end(kBayer8)) {
      return Rectangle(reference::kPhases[found - kBayer8], PhaseOf::kFrame, OutputOf(kind != 1 && kind != 2),
                       pool, call);
    }
    const RectangleArguments a = ChooseRectangle(pool);
    Compare(
        {}, 1, 0, [](void*, const void*) { return UTL_STS_INVALID_PARAMETER; },
        [&](void* dst, const void* src) { return call(dst, src, a, 0, 0); });
  }

  void RectangleBySettings() {
    const bool pool = ChooseMode() != 0;
    RectangleOf(pool, [](uint32_t kind, uint32_t format, void* dst, const void* src,
                         const RectangleArguments& a, bool) {
      const reference::Rectangle& r = a.rectangle;
      return ConvBayerRect_ACPI(kind, format, dst, src, a.src_width, a.src_height, r.left, r.top, r.width,
                                r.height, r.dst_width, r.dst_height, r.dst_left, r.dst_top);
    });
  }

  void RectangleByArguments() {
    RectangleOf(in_.Flag(), [](uint32_t kind, uint32_t format, void* dst, const void* src,
                               const RectangleArguments& a, bool pool) {
      const reference::Rectangle& r = a.rectangle;
      return ConvBayerRectEx_ACPI(kind, format, dst, src, a.src_width, a.src_height, r.left, r.top, r.width,
                                  r.height, r.dst_width, r.dst_height, r.dst_left, r.dst_top, pool);
    });
  }

  void MonoToMono() {
    const std::map<uint32_t, uint8_t> shifts = {{PRISMO_MONO10, 2}, {PRISMO_MONO12, 4}, {PRISMO_MONO16, 8}};
    static constexpr uint32_t kFormats[] = {PRISMO_MONO10, PRISMO_MONO12, PRISMO_MONO16};
    const uint32_t format = in_.Below(8) == 0 ? ChooseFormat() : in_.Choose(kFormats);
    pad_ = in_.Flag() ? in_.Byte() : 0;
    const RoutineCall call = [=](void* dst, const void* src, uint32_t w, uint32_t h, uint8_t, uint8_t pad) {
      return MonoNToMono8(dst, src, format, static_cast<int32_t>(w), static_cast<int32_t>(h), pad);
    };
    if (!shifts.contains(format)) return Refuse(UTL_STS_INVALID_PARAMETER, call);
    shift_ = shifts.at(format);
    Compare(
        in_.Fill(size_t{2} * width_ * height_), 2, reference::PlanePitch(width_, pad_) * height_,
        [&](void* dst, const void* src) {
          if (!Empty()) reference::ReduceToMono8({src, width_, true, shift_}, pad_, dst, height_);
          return UTL_STS_SUCCESS;
        },
        AsCall(call));
  }

  using MirrorFunction = uint32_t (*)(void*, const void*, uint32_t, uint32_t, uint32_t, uint8_t, uint8_t);

  void Mirror(bool pool, MirrorFunction function) {
    MirrorTo(in_.Flag() ? in_.Byte() : 0, in_.Flag() ? in_.Byte() : 0, pool, function);
  }

  void MirrorBySettings() {
    const uint8_t horizontal = in_.Flag() ? in_.Byte() : 0, vertical = in_.Flag() ? in_.Byte() : 0;
    MirrorTo(horizontal, vertical, ChooseMode() == 1 && horizontal, ReverseImg);
  }

  void MirrorTo(uint8_t horizontal, uint8_t vertical, bool pool, MirrorFunction function) {
    const uint32_t format = ChooseFormat();
    const RoutineCall call = [=](void* dst, const void* src, uint32_t w, uint32_t h, auto...) {
      return function(dst, src, format, w, h, horizontal, vertical);
    };
    const reference::MirrorUnit* unit = reference::MirrorUnitOf(format);
    if (!unit) return Refuse(UTL_STS_FAILURE, call);
    width_ -= width_ % unit->pixels;
    if (pool) height_ = std::max(height_, 1u);
    const size_t bytes = size_t{reference::MirrorRowBytes(*unit, width_)} * height_;
    Compare(
        in_.Fill(bytes), 1, bytes,
        [&](void* dst, const void* src) {
          reference::Mirror(*unit, dst, src, width_, height_, horizontal, vertical);
          return UTL_STS_SUCCESS;
        },
        AsCall(call));
  }

  void Raw() {
    const uint32_t target = ChooseFormat();
    const uint32_t source = in_.Below(8) == 0 ? ChooseFormat() : in_.Flag() ? PRISMO_BGRA8 : PRISMO_BGR8;
    pad_ = in_.Flag() ? in_.Byte() : 0;
    const uint32_t pixel_bytes = source == PRISMO_BGRA8 ? 4 : 3;
    const uint32_t group = target == PRISMO_YUV411 ? 4 : target == PRISMO_YUV422 ? 2 : 1;
    const size_t row = size_t{pixel_bytes} * width_;
    const size_t pitch = pad_ ? (row + 3) / 4 * 4 : row;
    Compare(
        in_.Fill(Empty() ? 0 : pitch * (height_ - 1) + row), 1, reference::RawBytes(target, width_, height_),
        [&](void* dst, const void* src) {
          if (Empty() || (source != PRISMO_BGRA8 && source != PRISMO_BGR8)) return UTL_STS_INVALID_PARAMETER;
          if (IsPixelBayer(target)) return UTL_STS_SUCCESS;
          if (width_ % group) return UTL_STS_INVALID_PARAMETER;
          return reference::MakeRaw(target, dst, src, pixel_bytes, width_, height_, pad_)
                     ? UTL_STS_SUCCESS
                     : UTL_STS_INVALID_PARAMETER;
        },
        [&](void* dst, const void* src) { return ToRaw(dst, src, target, source, width_, height_, pad_); });
  }

  void Bayer(reference::BayerDepths depths,
             uint32_t (*function)(void*, const void*, const int32_t*, int32_t, uint32_t, int32_t, uint8_t)) {
    pad_ = in_.Flag() ? in_.Byte() : 0;
    const uint32_t samples = 3 + in_.Below(2);
    int32_t channels[4];
    for (int32_t& channel : channels) channel = static_cast<int32_t>(in_.Below(samples));
    const size_t sample_bytes = depths.from > 8 ? 2 : 1;
    const size_t row = size_t{width_} * samples * sample_bytes;
    const size_t pitch = pad_ ? (row + 3) / 4 * 4 : row;
    Compare(
        in_.Fill(Empty() ? 0 : pitch * (height_ - 1) + row), sample_bytes,
        size_t{depths.to > 8 ? 2u : 1u} * width_ * height_,
        [&](void* dst, const void* src) {
          if (Empty() || width_ % 2 || height_ % 2) return UTL_STS_INVALID_PARAMETER;
          reference::MakeBayer(depths, dst, src, channels, width_, height_, samples, pad_);
          return UTL_STS_SUCCESS;
        },
        [&](void* dst, const void* src) {
          return function(dst, src, channels, static_cast<int32_t>(width_), height_,
                          static_cast<int32_t>(samples), pad_);
        });
  }

  FuzzInput in_;
  const Function* function_;
  uint32_t width_ = 0, height_ = 0;
  uint8_t shift_ = 0, pad_ = 0;
  size_t place_ = 0;
};

}  // namespace prismo::test

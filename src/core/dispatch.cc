#include "core/dispatch.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

#include "PrismoUtl.h"
#include "convert/padded.h"
#include "core/converter_table.h"
#include "core/routine_arguments.h"
#include "core/settings.h"
#include "core/status.h"

namespace prismo {
namespace {

using enum PixelFormat;

// `flag` is the trailing argument of routines that have one: pad, or one that is reserved.
using Routine = uint32_t (*)(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t flag);

template <auto kRoutine, uint8_t... kFixed>
uint32_t Call(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t flag) {
  using R = decltype(kRoutine);
  if constexpr (std::is_invocable_v<R, void*, const void*, uint32_t, uint32_t, decltype(kFixed)...,
                                    uint8_t>) {
    return kRoutine(dst, src, width, height, kFixed..., flag);
  } else {
    return kRoutine(dst, src, width, height, kFixed...);
  }
}

// The forms of a conversion on the caller's thread and on the pool.
struct Forms {
  Routine on_caller;
  Routine on_pool;
};

template <auto kOnCaller, auto kOnPool, uint8_t... kFixed>
constexpr Forms kForms{&Call<kOnCaller, kFixed...>, &Call<kOnPool, kFixed...>};

template <auto kOnCaller, uint8_t... kFixed>
constexpr Forms kCallerOnly = kForms<kOnCaller, kOnCaller, kFixed...>;

struct Route {
  PixelFormat format;
  Forms bilinear;
  Forms adaptive;
  Forms grey;

  constexpr Route(PixelFormat f, Forms forms) : Route(f, forms, forms, forms) {}
  constexpr Route(PixelFormat f, Forms demosaic, Forms undemosaiced)
      : Route(f, demosaic, demosaic, undemosaiced) {}
  constexpr Route(PixelFormat f, Forms by_default, Forms method_adaptive, Forms method_none)
      : format(f), bilinear(by_default), adaptive(method_adaptive), grey(method_none) {}

  const Forms& For(uint32_t method) const {
    return method == kMethodAdaptive ? adaptive : method == kMethodNone ? grey : bilinear;
  }
};

uint32_t PaddedMono8ToBgraRows(void* dst, const void* src, uint32_t width, uint32_t height) {
  return Code(PaddedMono8ToBgra(dst, src, {width, height}));
}
uint32_t PaddedBgr8ToBgraRows(void* dst, const void* src, uint32_t width, uint32_t height) {
  return Code(PaddedBgr8ToBgra(dst, src, {width, height}));
}
uint32_t PaddedMono8ToBgrRows(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t pad) {
  return Code(PaddedMono8ToBgr(BgrLayout(pad), dst, src, {width, height}));
}
uint32_t PaddedBgr8ToBgrRows(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t pad) {
  return Code(PaddedBgr8ToBgr(BgrLayout(pad), dst, src, {width, height}));
}

// Grey pictures stay on the caller's thread, with or without the pool, except for one Bayer format.
constexpr Forms kGrey8ToBgra = kCallerOnly<Mono8ToBGRA_SP>;
constexpr Forms kGrey10ToBgra = kCallerOnly<MonoNToBGRA_SP, kShift10>;
constexpr Forms kGrey12ToBgra = kCallerOnly<MonoNToBGRA_SP, kShift12>;
constexpr Forms kGrey16ToBgra = kCallerOnly<MonoNToBGRA_SP, kShift16>;
constexpr Forms kGrey12ToBgraOnPool = kForms<MonoNToBGRA_SP, MonoNToBGRA_MP, kShift12>;

// clang-format off
constexpr Route kBgraRoutes[] = {
    {kMono8, kGrey8ToBgra},
    {kMono10, kGrey10ToBgra},
    {kMono12, kGrey12ToBgra},
    {kMono16, kGrey16ToBgra},
    {kBayerGR8, kForms<ByrGR8ToBGRA_SP, ByrGR8ToBGRA_MP>, kForms<ByrGR8ToBGRA_SP_ACPI, ByrGR8ToBGRA_MP_ACPI>, kGrey8ToBgra},
    {kBayerRG8, kForms<ByrRG8ToBGRA_SP, ByrRG8ToBGRA_MP>, kForms<ByrRG8ToBGRA_SP_ACPI, ByrRG8ToBGRA_MP_ACPI>, kGrey8ToBgra},
    {kBayerGB8, kForms<ByrGB8ToBGRA_SP, ByrGB8ToBGRA_MP>, kForms<ByrGB8ToBGRA_SP_ACPI, ByrGB8ToBGRA_MP_ACPI>, kGrey8ToBgra},
    {kBayerBG8, kForms<ByrBG8ToBGRA_SP, ByrBG8ToBGRA_MP>, kForms<ByrBG8ToBGRA_SP_ACPI, ByrBG8ToBGRA_MP_ACPI>, kGrey8ToBgra},
    {kBayerGR10, kForms<ByrGRNToBGRA_SP, ByrGRNToBGRA_MP, kShift10>, kGrey10ToBgra},
    {kBayerRG10, kForms<ByrRGNToBGRA_SP, ByrRGNToBGRA_MP, kShift10>, kGrey10ToBgra},
    {kBayerGB10, kForms<ByrGBNToBGRA_SP, ByrGBNToBGRA_MP, kShift10>, kGrey10ToBgra},
    {kBayerBG10, kForms<ByrBGNToBGRA_SP, ByrBGNToBGRA_MP, kShift10>, kGrey10ToBgra},
    {kBayerGR12, kForms<ByrGRNToBGRA_SP, ByrGRNToBGRA_MP, kShift12>, kGrey12ToBgra},
    {kBayerRG12, kForms<ByrRGNToBGRA_SP, ByrRGNToBGRA_MP, kShift12>, kGrey12ToBgraOnPool},
    {kBayerGB12, kForms<ByrGBNToBGRA_SP, ByrGBNToBGRA_MP, kShift12>, kGrey12ToBgra},
    {kBayerBG12, kForms<ByrBGNToBGRA_SP, ByrBGNToBGRA_MP, kShift12>, kGrey12ToBgra},
    {kMono8Padded, kCallerOnly<PaddedMono8ToBgraRows>},
    {kRgb8, kForms<RGB8PToBGRA_SP, RGB8PToBGRA_MP>},
    {kBgr8, kForms<BGR8PToBGRA_SP, BGR8PToBGRA_MP>},
    {kRgb10, kForms<RGBNToBGRA_SP, RGBNToBGRA_MP, kShift10>},
    {kRgb12, kForms<RGBNToBGRA_SP, RGBNToBGRA_MP, kShift12>},
    {kBgr10, kForms<BGRNToBGRA_SP, BGRNToBGRA_MP, kShift10>},
    {kBgr12, kForms<BGRNToBGRA_SP, BGRNToBGRA_MP, kShift12>},
    {kBgr8Padded, kCallerOnly<PaddedBgr8ToBgraRows>},
    {kYuv411, kForms<YUV411PToBGRA_SP, YUV411PToBGRA_MP>},
    {kYuv422, kForms<YUV422PToBGRA_SP, YUV422PToBGRA_MP>},
    {kYuv444, kForms<YUV444PToBGRA_SP, YUV444PToBGRA_MP>},
};

// Unlike to BGRA, grey pictures use the pool here; BGR8 does not.
constexpr Forms kGrey8ToBgr = kForms<Mono8ToBGR_SP, Mono8ToBGR_MP>;
constexpr Forms kGrey10ToBgr = kForms<MonoNToBGR_SP, MonoNToBGR_MP, kShift10>;
constexpr Forms kGrey12ToBgr = kForms<MonoNToBGR_SP, MonoNToBGR_MP, kShift12>;
constexpr Forms kGrey16ToBgr = kForms<MonoNToBGR_SP, MonoNToBGR_MP, kShift16>;

constexpr Route kBgrRoutes[] = {
    {kMono8, kGrey8ToBgr},
    {kMono10, kGrey10ToBgr},
    {kMono12, kGrey12ToBgr},
    {kMono16, kGrey16ToBgr},
    {kBayerGR8, kForms<ByrGR8ToBGR_SP, ByrGR8ToBGR_MP>, kForms<ByrGR8ToBGR_SP_ACPI, ByrGR8ToBGR_MP_ACPI>, kGrey8ToBgr},
    {kBayerRG8, kForms<ByrRG8ToBGR_SP, ByrRG8ToBGR_MP>, kForms<ByrRG8ToBGR_SP_ACPI, ByrRG8ToBGR_MP_ACPI>, kGrey8ToBgr},
    {kBayerGB8, kForms<ByrGB8ToBGR_SP, ByrGB8ToBGR_MP>, kForms<ByrGB8ToBGR_SP_ACPI, ByrGB8ToBGR_MP_ACPI>, kGrey8ToBgr},
    {kBayerBG8, kForms<ByrBG8ToBGR_SP, ByrBG8ToBGR_MP>, kForms<ByrBG8ToBGR_SP_ACPI, ByrBG8ToBGR_MP_ACPI>, kGrey8ToBgr},
    {kBayerGR10, kForms<ByrGRNToBGR_SP, ByrGRNToBGR_MP, kShift10>, kGrey10ToBgr},
    {kBayerRG10, kForms<ByrRGNToBGR_SP, ByrRGNToBGR_MP, kShift10>, kGrey10ToBgr},
    {kBayerGB10, kForms<ByrGBNToBGR_SP, ByrGBNToBGR_MP, kShift10>, kGrey10ToBgr},
    {kBayerBG10, kForms<ByrBGNToBGR_SP, ByrBGNToBGR_MP, kShift10>, kGrey10ToBgr},
    {kBayerGR12, kForms<ByrGRNToBGR_SP, ByrGRNToBGR_MP, kShift12>, kGrey12ToBgr},
    {kBayerRG12, kForms<ByrRGNToBGR_SP, ByrRGNToBGR_MP, kShift12>, kGrey12ToBgr},
    {kBayerGB12, kForms<ByrGBNToBGR_SP, ByrGBNToBGR_MP, kShift12>, kGrey12ToBgr},
    {kBayerBG12, kForms<ByrBGNToBGR_SP, ByrBGNToBGR_MP, kShift12>, kGrey12ToBgr},
    {kMono8Padded, kCallerOnly<PaddedMono8ToBgrRows>},
    {kRgb8, kForms<RGB8PToBGR_SP, RGB8PToBGR_MP>},
    {kBgr8, kCallerOnly<BGR8PToBGR_SP>},
    {kRgb10, kForms<RGBNToBGR_SP, RGBNToBGR_MP, kShift10>},
    {kRgb12, kForms<RGBNToBGR_SP, RGBNToBGR_MP, kShift12>},
    {kBgr10, kForms<BGRNToBGR_SP, BGRNToBGR_MP, kShift10>},
    {kBgr12, kForms<BGRNToBGR_SP, BGRNToBGR_MP, kShift12>},
    {kBgr8Padded, kCallerOnly<PaddedBgr8ToBgrRows>},
    {kYuv411, kForms<YUV411PToBGR_SP, YUV411PToBGR_MP>},
    {kYuv422, kForms<YUV422PToBGR_SP, YUV422PToBGR_MP>},
    {kYuv444, kForms<YUV444PToBGR_SP, YUV444PToBGR_MP>},
};
// clang-format on

template <size_t kCount>
uint32_t Follow(const Route (&routes)[kCount], PixelFormat format, RouteChoice choice, void* dst,
                const void* src, FrameSize size, uint8_t flag) {
  const auto* route = std::ranges::find(routes, format, &Route::format);
  if (route == std::end(routes)) return UTL_STS_INVALID_PARAMETER;
  const Forms& forms = route->For(choice.method);
  return (choice.pool ? forms.on_pool : forms.on_caller)(dst, src, size.width, size.height, flag);
}

using PlanarRoutine = uint32_t (*)(const OutputPlanes& planes, const void* src, FrameSize size, uint8_t pad);

template <auto kRoutine>
uint32_t CallPlanar(const OutputPlanes& planes, const void* src, FrameSize size, uint8_t pad) {
  return kRoutine(planes.blue, planes.green, planes.red, src, size.width, size.height, pad);
}

struct PlanarRoute {
  PixelFormat format;
  PlanarRoutine on_caller;
  PlanarRoutine on_pool;
};

constexpr PlanarRoute kPlanarRoutes[] = {
    {kBayerBG8, &CallPlanar<ByrBG8ToBGRFS_SP>, &CallPlanar<ByrBG8ToBGRFS_MP>},
    {kBayerGR8, &CallPlanar<ByrGR8ToBGRFS_SP>, &CallPlanar<ByrGR8ToBGRFS_MP>},
    {kBayerRG8, &CallPlanar<ByrRG8ToBGRFS_SP>, &CallPlanar<ByrRG8ToBGRFS_MP>},
    {kBayerGB8, &CallPlanar<ByrGB8ToBGRFS_SP>, &CallPlanar<ByrGB8ToBGRFS_MP>},
    {kRgb8, &CallPlanar<RGB8PToBGRPlanar_SP>, &CallPlanar<RGB8PToBGRPlanar_MP>},
    {kBgr8, &CallPlanar<BGR8PToBGRPlanar_SP>, &CallPlanar<BGR8PToBGRPlanar_MP>},
};

constexpr uint32_t kTypeBgr = 1;
constexpr uint32_t kTypeBgrPad = 2;
constexpr bool IsRefused(uint32_t output_type) { return output_type >= 8 && output_type <= 15; }

bool HasPaddedRows(PixelFormat format) { return format == kBgr8Padded || format == kMono8Padded; }

}  // namespace

uint32_t ConvertToBgra(PixelFormat format, RouteChoice choice, void* dst, const void* src, FrameSize size,
                       uint8_t reserved) {
  return Follow(kBgraRoutes, format, choice, dst, src, size, reserved);
}

uint32_t ConvertToBgr(PixelFormat format, RouteChoice choice, void* dst, const void* src, FrameSize size,
                      uint8_t pad) {
  return Follow(kBgrRoutes, format, choice, dst, src, size, pad);
}

uint32_t ConvertToType(uint32_t output_type, PixelFormat format, RouteChoice choice, void* dst,
                       const void* src, FrameSize size) {
  if (output_type == kTypeBgr) return ConvertToBgr(format, choice, dst, src, size, kPacked);
  if (output_type == kTypeBgrPad) return ConvertToBgr(format, choice, dst, src, size, kPadded);
  if (IsRefused(output_type)) return UTL_STS_INVALID_PARAMETER;
  return ConvertToBgra(format, choice, dst, src, size, kReserved);
}

uint32_t ConvertBySettings(uint32_t output_type, PixelFormat format, bool demosaic, void* dst,
                           const void* src, FrameSize size) {
  // To BGR the padded mono format is left to the converter table, which does not know it.
  const bool by_route =
      output_type == kTypeBgrPad || (output_type == kTypeBgr ? format == kBgr8Padded : HasPaddedRows(format));
  if (by_route) {
    // The Bayer mode goes on as the method, so here mode 8 means grey and any mode but 0 the pool.
    const auto method = demosaic ? static_cast<uint32_t>(BayerMode()) : kMethodNone;
    return ConvertToType(output_type, format, {method, PoolWhenModeIsNotZero()}, dst, src, size);
  }
  const PrismoConverter convert =
      output_type == kTypeBgr ? BgrConverter(format, demosaic) : BgraConverter(format, demosaic);
  return convert ? convert(dst, src, size.width, size.height) : UTL_STS_INVALID_PARAMETER;
}

uint32_t ConvertToPlanes(PixelFormat format, bool pool, const OutputPlanes& planes, const void* src,
                         FrameSize size, uint8_t pad) {
  const auto* route = std::ranges::find(kPlanarRoutes, format, &PlanarRoute::format);
  if (route == std::end(kPlanarRoutes)) return UTL_STS_INVALID_PARAMETER;
  return (pool ? route->on_pool : route->on_caller)(planes, src, size, pad);
}

}  // namespace prismo

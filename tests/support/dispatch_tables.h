// Which routine each converter and each generic conversion runs, and on which threads.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "PrismoUtl.h"

namespace prismo::test {

// When a converter uses the pool.
enum class Pool : uint8_t { kModeOne, kNotZero, kNever };

struct Converter {
  const char* name;
  PrismoConverter call;
  const char* on_caller;
  const char* on_pool;
  uint8_t shift;
  uint8_t pad;
  Pool pool;
};

inline const Converter kConverters[] = {
    {"ConvByrBG8ToBGRA", ConvByrBG8ToBGRA, "ByrBG8ToBGRA_SP", "ByrBG8ToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvByrBG8ToBGR", ConvByrBG8ToBGR, "ByrBG8ToBGR_SP", "ByrBG8ToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvByrBG8ToBGRPad", ConvByrBG8ToBGRPad, "ByrBG8ToBGR_SP", "ByrBG8ToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvByrBG10ToBGRA", ConvByrBG10ToBGRA, "ByrBGNToBGRA_SP", "ByrBGNToBGRA_MP", 2, 0, Pool::kModeOne},
    {"ConvByrBG10ToBGR", ConvByrBG10ToBGR, "ByrBGNToBGR_SP", "ByrBGNToBGR_MP", 2, 0, Pool::kModeOne},
    {"ConvByrBG10ToBGRPad", ConvByrBG10ToBGRPad, "ByrBGNToBGR_SP", "ByrBGNToBGR_MP", 2, 1, Pool::kModeOne},
    {"ConvByrBG12ToBGRA", ConvByrBG12ToBGRA, "ByrBGNToBGRA_SP", "ByrBGNToBGRA_MP", 4, 0, Pool::kModeOne},
    {"ConvByrBG12ToBGR", ConvByrBG12ToBGR, "ByrBGNToBGR_SP", "ByrBGNToBGR_MP", 4, 0, Pool::kModeOne},
    {"ConvByrBG12ToBGRPad", ConvByrBG12ToBGRPad, "ByrBGNToBGR_SP", "ByrBGNToBGR_MP", 4, 1, Pool::kModeOne},
    {"ConvByrBG8ToBGRAACPI", ConvByrBG8ToBGRAACPI, "ByrBG8ToBGRA_SP_ACPI", "ByrBG8ToBGRA_MP_ACPI", 0, 0,
     Pool::kModeOne},
    {"ConvByrBG8ToBGRACPI", ConvByrBG8ToBGRACPI, "ByrBG8ToBGR_SP_ACPI", "ByrBG8ToBGR_MP_ACPI", 0, 0,
     Pool::kModeOne},
    {"ConvByrBG8ToBGRPad_ACPI", ConvByrBG8ToBGRPad_ACPI, "ByrBG8ToBGR_SP_ACPI", "ByrBG8ToBGR_MP_ACPI", 0, 1,
     Pool::kModeOne},
    {"ConvByrGB8ToBGRA", ConvByrGB8ToBGRA, "ByrGB8ToBGRA_SP", "ByrGB8ToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvByrGB8ToBGR", ConvByrGB8ToBGR, "ByrGB8ToBGR_SP", "ByrGB8ToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvByrGB8ToBGRPad", ConvByrGB8ToBGRPad, "ByrGB8ToBGR_SP", "ByrGB8ToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvByrGB10ToBGRA", ConvByrGB10ToBGRA, "ByrGBNToBGRA_SP", "ByrGBNToBGRA_MP", 2, 0, Pool::kModeOne},
    {"ConvByrGB10ToBGR", ConvByrGB10ToBGR, "ByrGBNToBGR_SP", "ByrGBNToBGR_MP", 2, 0, Pool::kModeOne},
    {"ConvByrGB10ToBGRPad", ConvByrGB10ToBGRPad, "ByrGBNToBGR_SP", "ByrGBNToBGR_MP", 2, 1, Pool::kModeOne},
    {"ConvByrGB12ToBGRA", ConvByrGB12ToBGRA, "ByrGBNToBGRA_SP", "ByrGBNToBGRA_MP", 4, 0, Pool::kModeOne},
    {"ConvByrGB12ToBGR", ConvByrGB12ToBGR, "ByrGBNToBGR_SP", "ByrGBNToBGR_MP", 4, 0, Pool::kModeOne},
    {"ConvByrGB12ToBGRPad", ConvByrGB12ToBGRPad, "ByrGBNToBGR_SP", "ByrGBNToBGR_MP", 4, 1, Pool::kModeOne},
    {"ConvByrGB8ToBGRAACPI", ConvByrGB8ToBGRAACPI, "ByrGB8ToBGRA_SP_ACPI", "ByrGB8ToBGRA_MP_ACPI", 0, 0,
     Pool::kModeOne},
    {"ConvByrGB8ToBGRACPI", ConvByrGB8ToBGRACPI, "ByrGB8ToBGR_SP_ACPI", "ByrGB8ToBGR_MP_ACPI", 0, 0,
     Pool::kModeOne},
    {"ConvByrGB8ToBGRPad_ACPI", ConvByrGB8ToBGRPad_ACPI, "ByrGB8ToBGR_SP_ACPI", "ByrGB8ToBGR_MP_ACPI", 0, 1,
     Pool::kModeOne},
    {"ConvByrGR8ToBGRA", ConvByrGR8ToBGRA, "ByrGR8ToBGRA_SP", "ByrGR8ToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvByrGR8ToBGR", ConvByrGR8ToBGR, "ByrGR8ToBGR_SP", "ByrGR8ToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvByrGR8ToBGRPad", ConvByrGR8ToBGRPad, "ByrGR8ToBGR_SP", "ByrGR8ToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvByrGR10ToBGRA", ConvByrGR10ToBGRA, "ByrGRNToBGRA_SP", "ByrGRNToBGRA_MP", 2, 0, Pool::kModeOne},
    {"ConvByrGR10ToBGR", ConvByrGR10ToBGR, "ByrGRNToBGR_SP", "ByrGRNToBGR_MP", 2, 0, Pool::kModeOne},
    {"ConvByrGR10ToBGRPad", ConvByrGR10ToBGRPad, "ByrGRNToBGR_SP", "ByrGRNToBGR_MP", 2, 1, Pool::kModeOne},
    {"ConvByrGR12ToBGRA", ConvByrGR12ToBGRA, "ByrGRNToBGRA_SP", "ByrGRNToBGRA_MP", 4, 0, Pool::kModeOne},
    {"ConvByrGR12ToBGR", ConvByrGR12ToBGR, "ByrGRNToBGR_SP", "ByrGRNToBGR_MP", 4, 0, Pool::kModeOne},
    {"ConvByrGR12ToBGRPad", ConvByrGR12ToBGRPad, "ByrGRNToBGR_SP", "ByrGRNToBGR_MP", 4, 1, Pool::kModeOne},
    {"ConvByrGR8ToBGRAACPI", ConvByrGR8ToBGRAACPI, "ByrGR8ToBGRA_SP_ACPI", "ByrGR8ToBGRA_MP_ACPI", 0, 0,
     Pool::kModeOne},
    {"ConvByrGR8ToBGRACPI", ConvByrGR8ToBGRACPI, "ByrGR8ToBGR_SP_ACPI", "ByrGR8ToBGR_MP_ACPI", 0, 0,
     Pool::kModeOne},
    {"ConvByrGR8ToBGRPad_ACPI", ConvByrGR8ToBGRPad_ACPI, "ByrGR8ToBGR_SP_ACPI", "ByrGR8ToBGR_MP_ACPI", 0, 1,
     Pool::kNotZero},
    {"ConvByrRG8ToBGRA", ConvByrRG8ToBGRA, "ByrRG8ToBGRA_SP", "ByrRG8ToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvByrRG8ToBGR", ConvByrRG8ToBGR, "ByrRG8ToBGR_SP", "ByrRG8ToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvByrRG8ToBGRPad", ConvByrRG8ToBGRPad, "ByrRG8ToBGR_SP", "ByrRG8ToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvByrRG10ToBGRA", ConvByrRG10ToBGRA, "ByrRGNToBGRA_SP", "ByrRGNToBGRA_MP", 2, 0, Pool::kModeOne},
    {"ConvByrRG10ToBGR", ConvByrRG10ToBGR, "ByrRGNToBGR_SP", "ByrRGNToBGR_MP", 2, 0, Pool::kModeOne},
    {"ConvByrRG10ToBGRPad", ConvByrRG10ToBGRPad, "ByrRGNToBGR_SP", "ByrRGNToBGR_MP", 2, 1, Pool::kModeOne},
    {"ConvByrRG12ToBGRA", ConvByrRG12ToBGRA, "ByrRGNToBGRA_SP", "ByrRGNToBGRA_MP", 4, 0, Pool::kModeOne},
    {"ConvByrRG12ToBGR", ConvByrRG12ToBGR, "ByrRGNToBGR_SP", "ByrRGNToBGR_MP", 4, 0, Pool::kModeOne},
    {"ConvByrRG12ToBGRPad", ConvByrRG12ToBGRPad, "ByrRGNToBGR_SP", "ByrRGNToBGR_MP", 4, 1, Pool::kModeOne},
    {"ConvByrRG8ToBGRAACPI", ConvByrRG8ToBGRAACPI, "ByrRG8ToBGRA_SP_ACPI", "ByrRG8ToBGRA_MP_ACPI", 0, 0,
     Pool::kModeOne},
    {"ConvByrRG8ToBGRACPI", ConvByrRG8ToBGRACPI, "ByrRG8ToBGR_SP_ACPI", "ByrRG8ToBGR_MP_ACPI", 0, 0,
     Pool::kNotZero},
    {"ConvByrRG8ToBGRPad_ACPI", ConvByrRG8ToBGRPad_ACPI, "ByrRG8ToBGR_SP_ACPI", "ByrRG8ToBGR_MP_ACPI", 0, 1,
     Pool::kNotZero},
    {"ConvMono8ToBGRA", ConvMono8ToBGRA, "Mono8ToBGRA_SP", "Mono8ToBGRA_SP", 0, 0, Pool::kNever},
    {"ConvMono10ToBGRA", ConvMono10ToBGRA, "MonoNToBGRA_SP", "MonoNToBGRA_SP", 2, 0, Pool::kNever},
    {"ConvMono12ToBGRA", ConvMono12ToBGRA, "MonoNToBGRA_SP", "MonoNToBGRA_SP", 4, 0, Pool::kNever},
    {"ConvMono16ToBGRA", ConvMono16ToBGRA, "MonoNToBGRA_SP", "MonoNToBGRA_SP", 8, 0, Pool::kNever},
    {"ConvMono8ToBGR", ConvMono8ToBGR, "Mono8ToBGR_SP", "Mono8ToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvMono8ToBGRPad", ConvMono8ToBGRPad, "Mono8ToBGR_SP", "Mono8ToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvMono10ToBGR", ConvMono10ToBGR, "MonoNToBGR_SP", "MonoNToBGR_MP", 2, 0, Pool::kModeOne},
    {"ConvMono10ToBGRPad", ConvMono10ToBGRPad, "MonoNToBGR_SP", "MonoNToBGR_MP", 2, 1, Pool::kModeOne},
    {"ConvMono12ToBGR", ConvMono12ToBGR, "MonoNToBGR_SP", "MonoNToBGR_MP", 4, 0, Pool::kModeOne},
    {"ConvMono12ToBGRPad", ConvMono12ToBGRPad, "MonoNToBGR_SP", "MonoNToBGR_MP", 4, 1, Pool::kModeOne},
    {"ConvMono16ToBGR", ConvMono16ToBGR, "MonoNToBGR_SP", "MonoNToBGR_MP", 8, 0, Pool::kModeOne},
    {"ConvMono16ToBGRPad", ConvMono16ToBGRPad, "MonoNToBGR_SP", "MonoNToBGR_MP", 8, 1, Pool::kModeOne},
    {"ConvRGB8PToBGRA", ConvRGB8PToBGRA, "RGB8PToBGRA_SP", "RGB8PToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvRGB10PToBGRA", ConvRGB10PToBGRA, "RGBNToBGRA_SP", "RGBNToBGRA_MP", 2, 0, Pool::kModeOne},
    {"ConvRGB10PToBGR", ConvRGB10PToBGR, "RGBNToBGR_SP", "RGBNToBGR_MP", 2, 0, Pool::kModeOne},
    {"ConvRGB10PToBGRPad", ConvRGB10PToBGRPad, "RGBNToBGR_SP", "RGBNToBGR_MP", 2, 1, Pool::kModeOne},
    {"ConvRGB12PToBGRA", ConvRGB12PToBGRA, "RGBNToBGRA_SP", "RGBNToBGRA_MP", 4, 0, Pool::kModeOne},
    {"ConvRGB12PToBGR", ConvRGB12PToBGR, "RGBNToBGR_SP", "RGBNToBGR_MP", 4, 0, Pool::kModeOne},
    {"ConvRGB12PToBGRPad", ConvRGB12PToBGRPad, "RGBNToBGR_SP", "RGBNToBGR_MP", 4, 1, Pool::kModeOne},
    {"ConvBGR8PToBGRA", ConvBGR8PToBGRA, "BGR8PToBGRA_SP", "BGR8PToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvBGR10PToBGRA", ConvBGR10PToBGRA, "BGRNToBGRA_SP", "BGRNToBGRA_MP", 2, 0, Pool::kModeOne},
    {"ConvBGR10PToBGR", ConvBGR10PToBGR, "BGRNToBGR_SP", "BGRNToBGR_MP", 2, 0, Pool::kModeOne},
    {"ConvBGR10PToBGRPad", ConvBGR10PToBGRPad, "BGRNToBGR_SP", "BGRNToBGR_MP", 2, 1, Pool::kModeOne},
    {"ConvBGR12PToBGRA", ConvBGR12PToBGRA, "BGRNToBGRA_SP", "BGRNToBGRA_MP", 4, 0, Pool::kModeOne},
    {"ConvBGR12PToBGR", ConvBGR12PToBGR, "BGRNToBGR_SP", "BGRNToBGR_MP", 4, 0, Pool::kModeOne},
    {"ConvBGR12PToBGRPad", ConvBGR12PToBGRPad, "BGRNToBGR_SP", "BGRNToBGR_MP", 4, 1, Pool::kModeOne},
    {"ConvRGB8PToBGR", ConvRGB8PToBGR, "RGB8PToBGR_SP", "RGB8PToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvRGB8PToBGRPad", ConvRGB8PToBGRPad, "RGB8PToBGR_SP", "RGB8PToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvBGR8PToBGR", ConvBGR8PToBGR, "BGR8PToBGR_SP", "BGR8PToBGR_SP", 0, 0, Pool::kNever},
    {"ConvBGR8PToBGRPad", ConvBGR8PToBGRPad, "BGR8PToBGR_SP", "BGR8PToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvYUV411PToBGRA", ConvYUV411PToBGRA, "YUV411PToBGRA_SP", "YUV411PToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvYUV411PToBGR", ConvYUV411PToBGR, "YUV411PToBGR_SP", "YUV411PToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvYUV411PToBGRPad", ConvYUV411PToBGRPad, "YUV411PToBGR_SP", "YUV411PToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvYUV422PToBGRA", ConvYUV422PToBGRA, "YUV422PToBGRA_SP", "YUV422PToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvYUV422PToBGR", ConvYUV422PToBGR, "YUV422PToBGR_SP", "YUV422PToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvYUV422PToBGRPad", ConvYUV422PToBGRPad, "YUV422PToBGR_SP", "YUV422PToBGR_MP", 0, 1, Pool::kModeOne},
    {"ConvYUV444PToBGRA", ConvYUV444PToBGRA, "YUV444PToBGRA_SP", "YUV444PToBGRA_MP", 0, 0, Pool::kModeOne},
    {"ConvYUV444PToBGR", ConvYUV444PToBGR, "YUV444PToBGR_SP", "YUV444PToBGR_MP", 0, 0, Pool::kModeOne},
    {"ConvYUV444PToBGRPad", ConvYUV444PToBGRPad, "YUV444PToBGR_SP", "YUV444PToBGR_MP", 0, 0, Pool::kModeOne},
};

struct ShiftConverter {
  const char* name;
  uint32_t (*call)(void*, const void*, uint32_t, uint32_t, uint8_t);
  const char* on_caller;
  const char* on_pool;
  Pool pool;
};

inline const ShiftConverter kShiftConverters[] = {
    {"ConvByrBGNToBGRA", ConvByrBGNToBGRA, "ByrBGNToBGRA_SP", "ByrBGNToBGRA_MP", Pool::kModeOne},
    {"ConvByrGBNToBGRA", ConvByrGBNToBGRA, "ByrGBNToBGRA_SP", "ByrGBNToBGRA_MP", Pool::kModeOne},
    {"ConvByrGRNToBGRA", ConvByrGRNToBGRA, "ByrGRNToBGRA_SP", "ByrGRNToBGRA_MP", Pool::kModeOne},
    {"ConvByrRGNToBGRA", ConvByrRGNToBGRA, "ByrRGNToBGRA_SP", "ByrRGNToBGRA_MP", Pool::kModeOne},
    {"ConvMonoNToBGRA", ConvMonoNToBGRA, "MonoNToBGRA_SP", "MonoNToBGRA_SP", Pool::kNever},
};

// Processing modes.
inline constexpr int32_t kModes[] = {0, 1, 2, 7};

inline bool OnPool(Pool pool, int32_t mode) {
  return pool == Pool::kModeOne ? mode == 1 : pool == Pool::kNotZero ? mode != 0 : false;
}

// The routines behind ToBGRA and ToBGR for a format and a demosaic method.
struct Route {
  uint32_t format;
  uint32_t method;
  std::string on_caller, on_pool;
  uint8_t shift;
};

inline constexpr uint32_t kMethods[] = {0, 1, 2, 8, 9};

struct PhaseFormats {
  const char* name;
  uint32_t bits8, bits10, bits12;
};

inline constexpr PhaseFormats kPhaseFormats[] = {
    {"GR", PRISMO_BAYER_GR8, PRISMO_BAYER_GR10, PRISMO_BAYER_GR12},
    {"RG", PRISMO_BAYER_RG8, PRISMO_BAYER_RG10, PRISMO_BAYER_RG12},
    {"GB", PRISMO_BAYER_GB8, PRISMO_BAYER_GB10, PRISMO_BAYER_GB12},
    {"BG", PRISMO_BAYER_BG8, PRISMO_BAYER_BG10, PRISMO_BAYER_BG12},
};

// Grey frames use the pool for BGR only; for BGRA a BayerRG12 frame shown as grey is the one exception.
inline std::vector<Route> Routes(bool bgra) {
  const std::string to = bgra ? "ToBGRA" : "ToBGR";
  const std::string grey_pool = to + (bgra ? "_SP" : "_MP");
  std::vector<Route> routes;
  for (const uint32_t method : kMethods) {
    const auto add = [&](uint32_t format, const std::string& on_caller, const std::string& on_pool,
                         uint8_t shift) {
      routes.push_back({format, method, on_caller, on_pool, shift});
    };
    add(PRISMO_MONO8, "Mono8" + to + "_SP", "Mono8" + grey_pool, 0);
    add(PRISMO_MONO10, "MonoN" + to + "_SP", "MonoN" + grey_pool, 2);
    add(PRISMO_MONO12, "MonoN" + to + "_SP", "MonoN" + grey_pool, 4);
    add(PRISMO_MONO16, "MonoN" + to + "_SP", "MonoN" + grey_pool, 8);
    for (const PhaseFormats& phase : kPhaseFormats) {
      const std::string name = std::string("Byr") + phase.name;
      if (method == 8) {
        add(phase.bits8, "Mono8" + to + "_SP", "Mono8" + grey_pool, 0);
        add(phase.bits10, "MonoN" + to + "_SP", "MonoN" + grey_pool, 2);
        add(phase.bits12, "MonoN" + to + "_SP",
            phase.bits12 == PRISMO_BAYER_RG12 ? "MonoN" + to + "_MP" : "MonoN" + grey_pool, 4);
      } else {
        const std::string suffix = method == 1 ? "_ACPI" : "";
        add(phase.bits8, name + "8" + to + "_SP" + suffix, name + "8" + to + "_MP" + suffix, 0);
        add(phase.bits10, name + "N" + to + "_SP", name + "N" + to + "_MP", 2);
        add(phase.bits12, name + "N" + to + "_SP", name + "N" + to + "_MP", 4);
      }
    }
    add(PRISMO_RGB8, "RGB8P" + to + "_SP", "RGB8P" + to + "_MP", 0);
    add(PRISMO_BGR8, "BGR8P" + to + "_SP", bgra ? "BGR8PToBGRA_MP" : "BGR8PToBGR_SP", 0);
    add(PRISMO_RGB10, "RGBN" + to + "_SP", "RGBN" + to + "_MP", 2);
    add(PRISMO_RGB12, "RGBN" + to + "_SP", "RGBN" + to + "_MP", 4);
    add(PRISMO_BGR10, "BGRN" + to + "_SP", "BGRN" + to + "_MP", 2);
    add(PRISMO_BGR12, "BGRN" + to + "_SP", "BGRN" + to + "_MP", 4);
    add(PRISMO_YUV411, "YUV411P" + to + "_SP", "YUV411P" + to + "_MP", 0);
    add(PRISMO_YUV422, "YUV422P" + to + "_SP", "YUV422P" + to + "_MP", 0);
    add(PRISMO_YUV444, "YUV444P" + to + "_SP", "YUV444P" + to + "_MP", 0);
  }
  return routes;
}

}  // namespace prismo::test

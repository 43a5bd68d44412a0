// The exported demosaic routines. Each is one statement; a converter that chooses its threads differently
// from its siblings says so above its line.
#include "PrismoUtl.h"
#include "api/thread_choice.h"
#include "bayer/acpi.h"
#include "bayer/bilinear.h"
#include "bayer/colour_planes.h"
#include "bayer/rectangle.h"

namespace prismo {
namespace {

constexpr uint8_t kPacked = 0;  // pad flags of BGR rows
constexpr uint8_t kPadded = 1;
constexpr uint8_t kShift10 = 2;  // right shifts that reduce 10- and 12-bit samples to 8 bits
constexpr uint8_t kShift12 = 4;
constexpr auto k8 = BayerDepth::k8;
constexpr auto kN = BayerDepth::kN;

}  // namespace
}  // namespace prismo

using namespace prismo;

// Bilinear, on the caller's thread.

PRISMO_API uint32_t ByrBG8ToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BilinearOnCaller({Phase::kBG, k8, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGB8ToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BilinearOnCaller({Phase::kGB, k8, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGR8ToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BilinearOnCaller({Phase::kGR, k8, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrRG8ToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BilinearOnCaller({Phase::kRG, k8, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrBGNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(BilinearOnCaller({Phase::kBG, kN, Layout::kBgra}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrGBNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(BilinearOnCaller({Phase::kGB, kN, Layout::kBgra}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrGRNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(BilinearOnCaller({Phase::kGR, kN, Layout::kBgra}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrRGNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(BilinearOnCaller({Phase::kRG, kN, Layout::kBgra}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrBG8ToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnCaller({Phase::kBG, k8, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGB8ToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnCaller({Phase::kGB, k8, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGR8ToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnCaller({Phase::kGR, k8, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrRG8ToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnCaller({Phase::kRG, k8, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrBGNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnCaller({Phase::kBG, kN, BgrLayout(pad)}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrGBNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnCaller({Phase::kGB, kN, BgrLayout(pad)}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrGRNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnCaller({Phase::kGR, kN, BgrLayout(pad)}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrRGNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnCaller({Phase::kRG, kN, BgrLayout(pad)}, dst, src, {width, height}, shift));
}

// Bilinear, on the pool.

PRISMO_API uint32_t ByrBG8ToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BilinearOnPool({Phase::kBG, k8, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGB8ToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BilinearOnPool({Phase::kGB, k8, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGR8ToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BilinearOnPool({Phase::kGR, k8, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrRG8ToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BilinearOnPool({Phase::kRG, k8, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrBGNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(BilinearOnPool({Phase::kBG, kN, Layout::kBgra}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrGBNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(BilinearOnPool({Phase::kGB, kN, Layout::kBgra}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrGRNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(BilinearOnPool({Phase::kGR, kN, Layout::kBgra}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrRGNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(BilinearOnPool({Phase::kRG, kN, Layout::kBgra}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrBG8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnPool({Phase::kBG, k8, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGB8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnPool({Phase::kGB, k8, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGR8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnPool({Phase::kGR, k8, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrRG8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnPool({Phase::kRG, k8, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrBGNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnPool({Phase::kBG, kN, BgrLayout(pad)}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrGBNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnPool({Phase::kGB, kN, BgrLayout(pad)}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrGRNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnPool({Phase::kGR, kN, BgrLayout(pad)}, dst, src, {width, height}, shift));
}
PRISMO_API uint32_t ByrRGNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) noexcept {
  return Code(BilinearOnPool({Phase::kRG, kN, BgrLayout(pad)}, dst, src, {width, height}, shift));
}

// Bilinear converters.

PRISMO_API uint32_t ConvByrBG8ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrBG8ToBGRA_SP, ByrBG8ToBGRA_MP>(dst, src, width, height);
}
PRISMO_API uint32_t ConvByrGB8ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGB8ToBGRA_SP, ByrGB8ToBGRA_MP>(dst, src, width, height);
}
PRISMO_API uint32_t ConvByrGR8ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGR8ToBGRA_SP, ByrGR8ToBGRA_MP>(dst, src, width, height);
}
PRISMO_API uint32_t ConvByrRG8ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrRG8ToBGRA_SP, ByrRG8ToBGRA_MP>(dst, src, width, height);
}
PRISMO_API uint32_t ConvByrBG8ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrBG8ToBGR_SP, ByrBG8ToBGR_MP>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvByrGB8ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGB8ToBGR_SP, ByrGB8ToBGR_MP>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvByrGR8ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGR8ToBGR_SP, ByrGR8ToBGR_MP>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvByrRG8ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrRG8ToBGR_SP, ByrRG8ToBGR_MP>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvByrBG8ToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrBG8ToBGR_SP, ByrBG8ToBGR_MP>(dst, src, width, height, kPadded);
}
PRISMO_API uint32_t ConvByrGB8ToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGB8ToBGR_SP, ByrGB8ToBGR_MP>(dst, src, width, height, kPadded);
}
PRISMO_API uint32_t ConvByrGR8ToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGR8ToBGR_SP, ByrGR8ToBGR_MP>(dst, src, width, height, kPadded);
}
PRISMO_API uint32_t ConvByrRG8ToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrRG8ToBGR_SP, ByrRG8ToBGR_MP>(dst, src, width, height, kPadded);
}
PRISMO_API uint32_t ConvByrBG10ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrBGNToBGRA_SP, ByrBGNToBGRA_MP>(dst, src, width, height, kShift10);
}
PRISMO_API uint32_t ConvByrGB10ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGBNToBGRA_SP, ByrGBNToBGRA_MP>(dst, src, width, height, kShift10);
}
PRISMO_API uint32_t ConvByrGR10ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGRNToBGRA_SP, ByrGRNToBGRA_MP>(dst, src, width, height, kShift10);
}
PRISMO_API uint32_t ConvByrRG10ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrRGNToBGRA_SP, ByrRGNToBGRA_MP>(dst, src, width, height, kShift10);
}
PRISMO_API uint32_t ConvByrBG10ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrBGNToBGR_SP, ByrBGNToBGR_MP>(dst, src, width, height, kShift10, kPacked);
}
PRISMO_API uint32_t ConvByrGB10ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGBNToBGR_SP, ByrGBNToBGR_MP>(dst, src, width, height, kShift10, kPacked);
}
PRISMO_API uint32_t ConvByrGR10ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGRNToBGR_SP, ByrGRNToBGR_MP>(dst, src, width, height, kShift10, kPacked);
}
PRISMO_API uint32_t ConvByrRG10ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrRGNToBGR_SP, ByrRGNToBGR_MP>(dst, src, width, height, kShift10, kPacked);
}
PRISMO_API uint32_t ConvByrBG10ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrBGNToBGR_SP, ByrBGNToBGR_MP>(dst, src, width, height, kShift10, kPadded);
}
PRISMO_API uint32_t ConvByrGB10ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrGBNToBGR_SP, ByrGBNToBGR_MP>(dst, src, width, height, kShift10, kPadded);
}
PRISMO_API uint32_t ConvByrGR10ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrGRNToBGR_SP, ByrGRNToBGR_MP>(dst, src, width, height, kShift10, kPadded);
}
PRISMO_API uint32_t ConvByrRG10ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrRGNToBGR_SP, ByrRGNToBGR_MP>(dst, src, width, height, kShift10, kPadded);
}
PRISMO_API uint32_t ConvByrBG12ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrBGNToBGRA_SP, ByrBGNToBGRA_MP>(dst, src, width, height, kShift12);
}
PRISMO_API uint32_t ConvByrGB12ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGBNToBGRA_SP, ByrGBNToBGRA_MP>(dst, src, width, height, kShift12);
}
PRISMO_API uint32_t ConvByrGR12ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGRNToBGRA_SP, ByrGRNToBGRA_MP>(dst, src, width, height, kShift12);
}
PRISMO_API uint32_t ConvByrRG12ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrRGNToBGRA_SP, ByrRGNToBGRA_MP>(dst, src, width, height, kShift12);
}
PRISMO_API uint32_t ConvByrBG12ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrBGNToBGR_SP, ByrBGNToBGR_MP>(dst, src, width, height, kShift12, kPacked);
}
PRISMO_API uint32_t ConvByrGB12ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGBNToBGR_SP, ByrGBNToBGR_MP>(dst, src, width, height, kShift12, kPacked);
}
PRISMO_API uint32_t ConvByrGR12ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrGRNToBGR_SP, ByrGRNToBGR_MP>(dst, src, width, height, kShift12, kPacked);
}
PRISMO_API uint32_t ConvByrRG12ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<ByrRGNToBGR_SP, ByrRGNToBGR_MP>(dst, src, width, height, kShift12, kPacked);
}
PRISMO_API uint32_t ConvByrBG12ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrBGNToBGR_SP, ByrBGNToBGR_MP>(dst, src, width, height, kShift12, kPadded);
}
PRISMO_API uint32_t ConvByrGB12ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrGBNToBGR_SP, ByrGBNToBGR_MP>(dst, src, width, height, kShift12, kPadded);
}
PRISMO_API uint32_t ConvByrGR12ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrGRNToBGR_SP, ByrGRNToBGR_MP>(dst, src, width, height, kShift12, kPadded);
}
PRISMO_API uint32_t ConvByrRG12ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrRGNToBGR_SP, ByrRGNToBGR_MP>(dst, src, width, height, kShift12, kPadded);
}
PRISMO_API uint32_t ConvByrBGNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                     uint8_t shift) noexcept {
  return WhenModeIsOne<ByrBGNToBGRA_SP, ByrBGNToBGRA_MP>(dst, src, width, height, shift);
}
PRISMO_API uint32_t ConvByrGBNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                     uint8_t shift) noexcept {
  return WhenModeIsOne<ByrGBNToBGRA_SP, ByrGBNToBGRA_MP>(dst, src, width, height, shift);
}
PRISMO_API uint32_t ConvByrGRNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                     uint8_t shift) noexcept {
  return WhenModeIsOne<ByrGRNToBGRA_SP, ByrGRNToBGRA_MP>(dst, src, width, height, shift);
}
PRISMO_API uint32_t ConvByrRGNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                     uint8_t shift) noexcept {
  return WhenModeIsOne<ByrRGNToBGRA_SP, ByrRGNToBGRA_MP>(dst, src, width, height, shift);
}

// Adaptive, on the caller's thread.

PRISMO_API uint32_t ByrBG8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return Code(AcpiOnCaller({Phase::kBG, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGB8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return Code(AcpiOnCaller({Phase::kGB, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGR8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return Code(AcpiOnCaller({Phase::kGR, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrRG8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return Code(AcpiOnCaller({Phase::kRG, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrBG8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) noexcept {
  return Code(AcpiOnCaller({Phase::kBG, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGB8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) noexcept {
  return Code(AcpiOnCaller({Phase::kGB, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGR8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) noexcept {
  return Code(AcpiOnCaller({Phase::kGR, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrRG8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) noexcept {
  return Code(AcpiOnCaller({Phase::kRG, BgrLayout(pad)}, dst, src, {width, height}));
}

// Adaptive, on the pool.

PRISMO_API uint32_t ByrBG8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return Code(AcpiOnPool({Phase::kBG, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGB8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return Code(AcpiOnPool({Phase::kGB, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGR8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return Code(AcpiOnPool({Phase::kGR, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrRG8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return Code(AcpiOnPool({Phase::kRG, Layout::kBgra}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrBG8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) noexcept {
  return Code(AcpiOnPool({Phase::kBG, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGB8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) noexcept {
  return Code(AcpiOnPool({Phase::kGB, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrGR8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) noexcept {
  return Code(AcpiOnPool({Phase::kGR, BgrLayout(pad)}, dst, src, {width, height}));
}
PRISMO_API uint32_t ByrRG8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) noexcept {
  return Code(AcpiOnPool({Phase::kRG, BgrLayout(pad)}, dst, src, {width, height}));
}

// Adaptive converters.

PRISMO_API uint32_t ConvByrBG8ToBGRAACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return WhenModeIsOne<ByrBG8ToBGRA_SP_ACPI, ByrBG8ToBGRA_MP_ACPI>(dst, src, width, height);
}
PRISMO_API uint32_t ConvByrGB8ToBGRAACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return WhenModeIsOne<ByrGB8ToBGRA_SP_ACPI, ByrGB8ToBGRA_MP_ACPI>(dst, src, width, height);
}
PRISMO_API uint32_t ConvByrGR8ToBGRAACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return WhenModeIsOne<ByrGR8ToBGRA_SP_ACPI, ByrGR8ToBGRA_MP_ACPI>(dst, src, width, height);
}
PRISMO_API uint32_t ConvByrRG8ToBGRAACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) noexcept {
  return WhenModeIsOne<ByrRG8ToBGRA_SP_ACPI, ByrRG8ToBGRA_MP_ACPI>(dst, src, width, height);
}
PRISMO_API uint32_t ConvByrBG8ToBGRACPI(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrBG8ToBGR_SP_ACPI, ByrBG8ToBGR_MP_ACPI>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvByrGB8ToBGRACPI(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrGB8ToBGR_SP_ACPI, ByrGB8ToBGR_MP_ACPI>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvByrGR8ToBGRACPI(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<ByrGR8ToBGR_SP_ACPI, ByrGR8ToBGR_MP_ACPI>(dst, src, width, height, kPacked);
}
// Any mode but 0 selects the pool here; applications that set mode 2 depend on it.
PRISMO_API uint32_t ConvByrRG8ToBGRACPI(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsNotZero<ByrRG8ToBGR_SP_ACPI, ByrRG8ToBGR_MP_ACPI>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvByrBG8ToBGRPad_ACPI(void* dst, const void* src, uint32_t width,
                                            uint32_t height) noexcept {
  return WhenModeIsOne<ByrBG8ToBGR_SP_ACPI, ByrBG8ToBGR_MP_ACPI>(dst, src, width, height, kPadded);
}
PRISMO_API uint32_t ConvByrGB8ToBGRPad_ACPI(void* dst, const void* src, uint32_t width,
                                            uint32_t height) noexcept {
  return WhenModeIsOne<ByrGB8ToBGR_SP_ACPI, ByrGB8ToBGR_MP_ACPI>(dst, src, width, height, kPadded);
}
// Any mode but 0 selects the pool here; applications that set mode 2 depend on it.
PRISMO_API uint32_t ConvByrGR8ToBGRPad_ACPI(void* dst, const void* src, uint32_t width,
                                            uint32_t height) noexcept {
  return WhenModeIsNotZero<ByrGR8ToBGR_SP_ACPI, ByrGR8ToBGR_MP_ACPI>(dst, src, width, height, kPadded);
}
// Any mode but 0 selects the pool here; applications that set mode 2 depend on it.
PRISMO_API uint32_t ConvByrRG8ToBGRPad_ACPI(void* dst, const void* src, uint32_t width,
                                            uint32_t height) noexcept {
  return WhenModeIsNotZero<ByrRG8ToBGR_SP_ACPI, ByrRG8ToBGR_MP_ACPI>(dst, src, width, height, kPadded);
}

// Rectangles whose own top-left pixel has the named phase.

PRISMO_API uint32_t RectBG8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangle({Phase::kBG, Layout::kBgra},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kCaller));
}
PRISMO_API uint32_t RectGB8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangle({Phase::kGB, Layout::kBgra},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kCaller));
}
PRISMO_API uint32_t RectGR8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangle({Phase::kGR, Layout::kBgra},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kCaller));
}
PRISMO_API uint32_t RectRG8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangle({Phase::kRG, Layout::kBgra},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kCaller));
}
PRISMO_API uint32_t RectBG8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) noexcept {
  return Code(DemosaicRectangle({Phase::kBG, BgrLayout(pad)},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kCaller));
}
PRISMO_API uint32_t RectGB8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) noexcept {
  return Code(DemosaicRectangle({Phase::kGB, BgrLayout(pad)},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kCaller));
}
PRISMO_API uint32_t RectGR8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) noexcept {
  return Code(DemosaicRectangle({Phase::kGR, BgrLayout(pad)},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kCaller));
}
PRISMO_API uint32_t RectRG8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) noexcept {
  return Code(DemosaicRectangle({Phase::kRG, BgrLayout(pad)},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kCaller));
}
PRISMO_API uint32_t RectBG8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangle({Phase::kBG, Layout::kBgra},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kPool));
}
PRISMO_API uint32_t RectGB8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangle({Phase::kGB, Layout::kBgra},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kPool));
}
PRISMO_API uint32_t RectGR8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangle({Phase::kGR, Layout::kBgra},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kPool));
}
PRISMO_API uint32_t RectRG8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangle({Phase::kRG, Layout::kBgra},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kPool));
}
PRISMO_API uint32_t RectBG8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) noexcept {
  return Code(DemosaicRectangle({Phase::kBG, BgrLayout(pad)},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kPool));
}
PRISMO_API uint32_t RectGB8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) noexcept {
  return Code(DemosaicRectangle({Phase::kGB, BgrLayout(pad)},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kPool));
}
PRISMO_API uint32_t RectGR8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) noexcept {
  return Code(DemosaicRectangle({Phase::kGR, BgrLayout(pad)},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kPool));
}
PRISMO_API uint32_t RectRG8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) noexcept {
  return Code(DemosaicRectangle({Phase::kRG, BgrLayout(pad)},
                                {dst,
                                 src,
                                 {srcWidth, srcHeight},
                                 left,
                                 top,
                                 {rectWidth, rectHeight},
                                 {dstWidth, dstHeight},
                                 dstLeft,
                                 dstTop},
                                Threads::kPool));
}

// Rectangles of frames that have the named phase.

PRISMO_API uint32_t ConvBG8RectToBGRA_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                           uint32_t left, uint32_t top, uint32_t rectWidth,
                                           uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                           uint32_t dstLeft, uint32_t dstTop, uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFrame({Phase::kBG, Layout::kBgra},
                                       {dst,
                                        src,
                                        {srcWidth, srcHeight},
                                        left,
                                        top,
                                        {rectWidth, rectHeight},
                                        {dstWidth, dstHeight},
                                        dstLeft,
                                        dstTop},
                                       ThreadsFor(multiThread)));
}
PRISMO_API uint32_t ConvGB8RectToBGRA_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                           uint32_t left, uint32_t top, uint32_t rectWidth,
                                           uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                           uint32_t dstLeft, uint32_t dstTop, uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFrame({Phase::kGB, Layout::kBgra},
                                       {dst,
                                        src,
                                        {srcWidth, srcHeight},
                                        left,
                                        top,
                                        {rectWidth, rectHeight},
                                        {dstWidth, dstHeight},
                                        dstLeft,
                                        dstTop},
                                       ThreadsFor(multiThread)));
}
PRISMO_API uint32_t ConvGR8RectToBGRA_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                           uint32_t left, uint32_t top, uint32_t rectWidth,
                                           uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                           uint32_t dstLeft, uint32_t dstTop, uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFrame({Phase::kGR, Layout::kBgra},
                                       {dst,
                                        src,
                                        {srcWidth, srcHeight},
                                        left,
                                        top,
                                        {rectWidth, rectHeight},
                                        {dstWidth, dstHeight},
                                        dstLeft,
                                        dstTop},
                                       ThreadsFor(multiThread)));
}
PRISMO_API uint32_t ConvRG8RectToBGRA_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                           uint32_t left, uint32_t top, uint32_t rectWidth,
                                           uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                           uint32_t dstLeft, uint32_t dstTop, uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFrame({Phase::kRG, Layout::kBgra},
                                       {dst,
                                        src,
                                        {srcWidth, srcHeight},
                                        left,
                                        top,
                                        {rectWidth, rectHeight},
                                        {dstWidth, dstHeight},
                                        dstLeft,
                                        dstTop},
                                       ThreadsFor(multiThread)));
}
PRISMO_API uint32_t ConvBG8RectToBGR_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop, uint8_t pad,
                                          uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFrame({Phase::kBG, BgrLayout(pad)},
                                       {dst,
                                        src,
                                        {srcWidth, srcHeight},
                                        left,
                                        top,
                                        {rectWidth, rectHeight},
                                        {dstWidth, dstHeight},
                                        dstLeft,
                                        dstTop},
                                       ThreadsFor(multiThread)));
}
PRISMO_API uint32_t ConvGB8RectToBGR_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop, uint8_t pad,
                                          uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFrame({Phase::kGB, BgrLayout(pad)},
                                       {dst,
                                        src,
                                        {srcWidth, srcHeight},
                                        left,
                                        top,
                                        {rectWidth, rectHeight},
                                        {dstWidth, dstHeight},
                                        dstLeft,
                                        dstTop},
                                       ThreadsFor(multiThread)));
}
PRISMO_API uint32_t ConvGR8RectToBGR_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop, uint8_t pad,
                                          uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFrame({Phase::kGR, BgrLayout(pad)},
                                       {dst,
                                        src,
                                        {srcWidth, srcHeight},
                                        left,
                                        top,
                                        {rectWidth, rectHeight},
                                        {dstWidth, dstHeight},
                                        dstLeft,
                                        dstTop},
                                       ThreadsFor(multiThread)));
}
PRISMO_API uint32_t ConvRG8RectToBGR_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop, uint8_t pad,
                                          uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFrame({Phase::kRG, BgrLayout(pad)},
                                       {dst,
                                        src,
                                        {srcWidth, srcHeight},
                                        left,
                                        top,
                                        {rectWidth, rectHeight},
                                        {dstWidth, dstHeight},
                                        dstLeft,
                                        dstTop},
                                       ThreadsFor(multiThread)));
}
PRISMO_API uint32_t ConvBayerRectEx_ACPI(uint32_t outputKind, uint32_t pixelFormat, void* dst,
                                         const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t multiThread) noexcept {
  return Code(DemosaicRectangleOfFormat(outputKind, PixelFormat{pixelFormat},
                                        {dst,
                                         src,
                                         {srcWidth, srcHeight},
                                         left,
                                         top,
                                         {rectWidth, rectHeight},
                                         {dstWidth, dstHeight},
                                         dstLeft,
                                         dstTop},
                                        ThreadsFor(multiThread)));
}
// Any mode but 0 selects the pool here.
PRISMO_API uint32_t ConvBayerRect_ACPI(uint32_t outputKind, uint32_t pixelFormat, void* dst, const void* src,
                                       uint32_t srcWidth, uint32_t srcHeight, uint32_t left, uint32_t top,
                                       uint32_t rectWidth, uint32_t rectHeight, uint32_t dstWidth,
                                       uint32_t dstHeight, uint32_t dstLeft, uint32_t dstTop) noexcept {
  return Code(DemosaicRectangleOfFormat(outputKind, PixelFormat{pixelFormat},
                                        {dst,
                                         src,
                                         {srcWidth, srcHeight},
                                         left,
                                         top,
                                         {rectWidth, rectHeight},
                                         {dstWidth, dstHeight},
                                         dstLeft,
                                         dstTop},
                                        ThreadsFor(PoolWhenModeIsNotZero())));
}

// Bilinear, into planes.

PRISMO_API uint32_t ByrBG8ToBGRFS_SP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) noexcept {
  return Code(PlanesOnCaller(Phase::kBG, {dstB, dstG, dstR}, src, {width, height}, pad));
}
PRISMO_API uint32_t ByrGB8ToBGRFS_SP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) noexcept {
  return Code(PlanesOnCaller(Phase::kGB, {dstB, dstG, dstR}, src, {width, height}, pad));
}
PRISMO_API uint32_t ByrGR8ToBGRFS_SP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) noexcept {
  return Code(PlanesOnCaller(Phase::kGR, {dstB, dstG, dstR}, src, {width, height}, pad));
}
PRISMO_API uint32_t ByrRG8ToBGRFS_SP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) noexcept {
  return Code(PlanesOnCaller(Phase::kRG, {dstB, dstG, dstR}, src, {width, height}, pad));
}
PRISMO_API uint32_t ByrBG8ToBGRFS_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) noexcept {
  return Code(PlanesOnPool(Phase::kBG, {dstB, dstG, dstR}, src, {width, height}, pad));
}
PRISMO_API uint32_t ByrGB8ToBGRFS_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) noexcept {
  return Code(PlanesOnPool(Phase::kGB, {dstB, dstG, dstR}, src, {width, height}, pad));
}
PRISMO_API uint32_t ByrGR8ToBGRFS_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) noexcept {
  return Code(PlanesOnPool(Phase::kGR, {dstB, dstG, dstR}, src, {width, height}, pad));
}
PRISMO_API uint32_t ByrRG8ToBGRFS_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) noexcept {
  return Code(PlanesOnPool(Phase::kRG, {dstB, dstG, dstR}, src, {width, height}, pad));
}
PRISMO_API uint32_t ConvertBayerFS(uint32_t pixelFormat, void* dstB, void* dstG, void* dstR, const void* src,
                                   uint32_t width, uint32_t height) noexcept {
  return Code(PlanesOfFormat(PixelFormat{pixelFormat}, {dstB, dstG, dstR}, src, {width, height},
                             PoolWhenModeIsOne()));
}

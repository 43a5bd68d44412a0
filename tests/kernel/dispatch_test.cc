// Which routine each generic entry, getter and converter runs, on which threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "reference/colour.h"
#include "support/dispatch_tables.h"
#include "support/generators.h"
#include "support/pool.h"
#include "support/routines.h"
#include "support/sweeps.h"

namespace prismo::test {
namespace {

using reference::Output;
using reference::PackedFrame;
using reference::Picture;

// What a call did: its status, all that it wrote, and whether it used the pool.
struct Outcome {
  uint32_t status;
  std::vector<uint8_t> bytes;
  bool pool;

  bool operator==(const Outcome&) const = default;
  friend void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << "status " << outcome.status << (outcome.pool ? ", on the pool" : ", on the caller") << ", bytes";
    for (size_t i = 0; i < 24; ++i) *out << ' ' << int{outcome.bytes[i]};
  }
};

class Dispatch : public PoolTest {
 protected:
  // Tall enough for the most threads that a pool has; padded, but for YUV 4:1:1, which holds no such width.
  static constexpr uint32_t kHeight = 40;
  static uint32_t WidthFor(const std::string& name) {
    return name.find("411") == std::string::npos ? 10 : 12;
  }
  static uint32_t WidthFor(uint32_t format) { return format == PRISMO_YUV411 ? 12 : 10; }

  Dispatch() : random_(Seed()), src_(RandomBytes(12 * kHeight * 6, random_)) { PrepareLUT(); }

  template <class Call>
  Outcome Observe(Call&& call) const {
    Outcome outcome{0, std::vector<uint8_t>(12 * kHeight * 4, 0x77), false};
    outcome.pool = UsesPool([&] { outcome.status = call(outcome.bytes.data()); });
    return outcome;
  }

  Outcome ObserveRoutine(const std::string& name, uint32_t width, uint8_t shift, uint8_t pad) const {
    return Observe(
        [&](void* dst) { return RoutineNamed(name)(dst, src_.data(), width, kHeight, shift, pad); });
  }

  Outcome ObserveConverter(PrismoConverter converter, uint32_t width) const {
    return Observe([&](void* dst) { return converter(dst, src_.data(), width, kHeight); });
  }

  static Outcome Refusal() { return {13, std::vector<uint8_t>(12 * kHeight * 4, 0x77), false}; }

  Random random_;
  std::vector<uint8_t> src_;  // words use all their bits: masks and spills show
};

TEST_F(Dispatch, ConvertersChooseByTheProcessingMode) {
  PRISMO_TRACE_SEED();
  for (const Converter& converter : kConverters) {
    const uint32_t width = WidthFor(converter.name);
    const Outcome on_caller = ObserveRoutine(converter.on_caller, width, converter.shift, converter.pad);
    const Outcome on_pool = ObserveRoutine(converter.on_pool, width, converter.shift, converter.pad);
    ASSERT_FALSE(on_caller.pool);
    ASSERT_EQ(on_pool.pool, converter.pool != Pool::kNever) << converter.on_pool;
    for (const int32_t mode : kModes) {
      SetProcMode(mode);
      EXPECT_EQ(ObserveConverter(converter.call, width), OnPool(converter.pool, mode) ? on_pool : on_caller)
          << converter.name << ", mode " << mode;
    }
  }
}

TEST_F(Dispatch, ConvertersWithAShiftChooseByTheProcessingMode) {
  PRISMO_TRACE_SEED();
  for (const ShiftConverter& converter : kShiftConverters) {
    for (const uint8_t shift : std::vector<uint8_t>{0, 2, 6, 33}) {
      const Outcome on_caller = ObserveRoutine(converter.on_caller, 10, shift, 0);
      const Outcome on_pool = ObserveRoutine(converter.on_pool, 10, shift, 0);
      for (const int32_t mode : kModes) {
        SetProcMode(mode);
        EXPECT_EQ(Observe([&](void* dst) { return converter.call(dst, src_.data(), 10, kHeight, shift); }),
                  OnPool(converter.pool, mode) ? on_pool : on_caller)
            << converter.name << ", mode " << mode << ", shift " << int{shift};
      }
    }
  }
}

TEST_F(Dispatch, ConvertersRefuseNullAndAcceptEmptyFrames) {
  std::vector<uint8_t> dst(64, 9);
  for (const int32_t mode : kModes) {
    SetProcMode(mode);
    for (const Converter& converter : kConverters) {
      SCOPED_TRACE(converter.name);
      EXPECT_EQ(converter.call(dst.data(), src_.data(), 0, 4), 0u);
      EXPECT_EQ(converter.call(dst.data(), src_.data(), 4, 0), 0u);
      EXPECT_EQ(converter.call(dst.data(), src_.data(), 65536, 65536), 0u);
      if (converter.call == ConvBGR8PToBGR) continue;
      EXPECT_EQ(converter.call(nullptr, src_.data(), 4, 4), 13u);
      EXPECT_EQ(converter.call(dst.data(), nullptr, 4, 4), 13u);
    }
    for (const ShiftConverter& converter : kShiftConverters) {
      SCOPED_TRACE(converter.name);
      EXPECT_EQ(converter.call(nullptr, src_.data(), 4, 4, 2), 13u);
      EXPECT_EQ(converter.call(dst.data(), nullptr, 4, 4, 2), 13u);
      EXPECT_EQ(converter.call(dst.data(), src_.data(), 4, 0, 2), 0u);
    }
  }
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_EQ(dst, std::vector<uint8_t>(64, 9));
}

TEST_F(Dispatch, PaddedBgrUsesNoPoolWhereNothingIsPadded) {
  SetProcMode(1);
  EXPECT_FALSE(ObserveConverter(ConvBGR8PToBGRPad, 12).pool);
  EXPECT_TRUE(ObserveConverter(ConvBGR8PToBGRPad, 10).pool);
}

testing::Message Describe(const Route& route, bool pool) {
  return testing::Message() << std::hex << route.format << std::dec << ", method " << route.method
                            << (pool ? ", pool" : ", caller");
}

TEST_F(Dispatch, ToBgraRoutes) {
  PRISMO_TRACE_SEED();
  for (const Route& route : Routes(true)) {
    const uint32_t width = WidthFor(route.format);
    for (const uint8_t pool : std::vector<uint8_t>{0, 1, 4}) {
      SCOPED_TRACE(Describe(route, pool));
      const Outcome expected = ObserveRoutine(pool ? route.on_pool : route.on_caller, width, route.shift, 0);
      EXPECT_EQ(Observe([&](void* dst) {
                  return ToBGRA(dst, src_.data(), route.format, width, kHeight, route.method, pool, 1);
                }),
                expected);
      for (const uint32_t output : {0u, 3u, 7u, 16u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Observe([&](void* dst) {
                    return ConvImageEx(output, route.format, dst, src_.data(), width, kHeight, route.method,
                                       pool);
                  }),
                  expected)
            << "output type " << output;
      }
    }
  }
}

TEST_F(Dispatch, ToBgrRoutes) {
  PRISMO_TRACE_SEED();
  for (const Route& route : Routes(false)) {
    const uint32_t width = WidthFor(route.format);
    for (const uint8_t pool : kOffOn) {
      for (const uint8_t pad : kOffOn) {
        SCOPED_TRACE(Describe(route, pool) << ", pad " << int{pad});
        const Outcome expected =
            ObserveRoutine(pool ? route.on_pool : route.on_caller, width, route.shift, pad);
        EXPECT_EQ(Observe([&](void* dst) {
                    return ToBGR(dst, src_.data(), route.format, width, kHeight, route.method, pool, pad);
                  }),
                  expected);
        EXPECT_EQ(Observe([&](void* dst) {
                    return ConvImageEx(pad ? 2 : 1, route.format, dst, src_.data(), width, kHeight,
                                       route.method, pool);
                  }),
                  expected);
      }
    }
  }
}

// The padded formats are converted row by row on the caller's thread; pad bytes of the output are left alone.
TEST_F(Dispatch, PaddedFormats) {
  PRISMO_TRACE_SEED();
  for (const bool mono : {true, false}) {
    const uint32_t format = mono ? PRISMO_MONO8_PADDED : PRISMO_BGR8_PADDED;
    for (const uint32_t width : {1u, 2u, 3u, 4u, 5u, 7u, 8u, 11u}) {
      const uint32_t row_bytes = mono ? width : 3 * width;
      const uint32_t pitch = row_bytes + reference::PadBytes(row_bytes);
      std::vector<uint8_t> dense;
      for (uint32_t y = 0; y < kHeight; ++y) {
        const auto row = src_.begin() + y * pitch;
        dense.insert(dense.end(), row, row + row_bytes);
      }
      const PackedFrame frame{dense.data(), width, false, 0,
                              mono ? PackedFrame::Order::kGrey : PackedFrame::Order::kBgr};
      for (const Output output : reference::kOutputs) {
        SCOPED_TRACE(testing::Message() << (mono ? "mono" : "BGR") << " width " << width << " output "
                                        << static_cast<int>(output));
        Outcome expected = Refusal();
        expected.status = 0;
        reference::Convert(frame, output, expected.bytes.data(), kHeight);
        if (output == Output::kPad) {
          const uint32_t pad = reference::PadBytes(3 * width);
          const Picture picture(expected.bytes.data(), output, width);
          for (uint32_t y = 0; y < kHeight; ++y) {
            // The layout of a padded BGR frame is already that of its output: it is copied with its pad
            // bytes.
            for (uint32_t i = 0; i < pad; ++i) {
              picture.At(width, y)[i] = mono ? uint8_t{0x77} : src_[y * pitch + row_bytes + i];
            }
          }
        }
        const uint32_t type = output == Output::kBgra ? 0 : output == Output::kBgr ? 1 : 2;
        for (const uint8_t pool : kOffOn) {
          EXPECT_EQ(Observe([&](void* dst) {
                      return ConvImageEx(type, format, dst, src_.data(), width, kHeight, 0, pool);
                    }),
                    expected);
          EXPECT_EQ(Observe([&](void* dst) {
                      return type == 0 ? ToBGRA(dst, src_.data(), format, width, kHeight, 1, pool, 0)
                                       : ToBGR(dst, src_.data(), format, width, kHeight, 8, pool, type == 2);
                    }),
                    expected);
        }
        for (const uint8_t demosaic : kOffOn) {
          // Output type 1 has no converter for padded grey.
          const bool refused = mono && type == 1;
          EXPECT_EQ(Observe([&](void* dst) {
                      return ConvImage(type, format, demosaic, dst, src_.data(), width, kHeight);
                    }),
                    refused ? Refusal() : expected);
        }
      }
    }
  }
}

// Empty frames are no reason to look at the buffers; copies of padded BGR do not care for null at all.
TEST_F(Dispatch, PaddedFormatsWithoutBuffers) {
  uint8_t some[64] = {};
  for (const uint32_t format : {PRISMO_BGR8_PADDED, PRISMO_MONO8_PADDED}) {
    for (const uint32_t type : {0u, 1u, 2u}) {
      const uint32_t expected =
          format == PRISMO_BGR8_PADDED && type != 0 ? UTL_STS_SUCCESS : UTL_STS_INVALID_PARAMETER;
      EXPECT_EQ(ConvImageEx(type, format, nullptr, some, 2, 2, 0, 0), expected) << format << " to " << type;
      EXPECT_EQ(ConvImageEx(type, format, some, nullptr, 2, 2, 0, 1), expected) << format << " to " << type;
      EXPECT_EQ(ConvImageEx(type, format, nullptr, nullptr, 0, 2, 0, 0), UTL_STS_SUCCESS);
    }
  }
  for (const uint8_t byte : some) EXPECT_EQ(byte, 0);
}

// Formats with routes, all those that the library knows, and codes that it does not know.
std::vector<uint32_t> RoutedFormats() {
  std::vector<uint32_t> formats{PRISMO_BGR8_PADDED, PRISMO_MONO8_PADDED};
  for (const Route& route : Routes(true)) {
    if (route.method == 0) formats.push_back(route.format);
  }
  return formats;
}

std::vector<uint32_t> AllFormats() {
  std::vector<uint32_t> formats = RoutedFormats();
  for (const uint32_t format : {PRISMO_BGRA8, PRISMO_BGRA10, 0u, 0x12345678u, 0xFFFFFFFFu})
    formats.push_back(format);
  return formats;
}

TEST_F(Dispatch, UnsupportedFormatsAreRefusedAtAnySize) {
  std::vector<uint8_t> dst(64, 9);
  for (const uint32_t format : {PRISMO_BGRA8, PRISMO_BGRA10, 0u, 0x12345678u}) {
    for (const uint32_t width : {0u, 4u}) {
      for (const uint8_t flag : kOffOn) {
        EXPECT_EQ(ToBGRA(dst.data(), src_.data(), format, width, 2, 0, flag, 0), 13u);
        EXPECT_EQ(ToBGR(dst.data(), src_.data(), format, width, 2, 0, flag, flag), 13u);
        EXPECT_EQ(ConvImageEx(flag, format, dst.data(), src_.data(), width, 2, 0, flag), 13u);
        EXPECT_EQ(ConvImage(2, format, flag, dst.data(), src_.data(), width, 2), 13u);
        if (format == PRISMO_BGRA8) continue;
        EXPECT_EQ(ConvImage(0, format, flag, dst.data(), src_.data(), width, 2), 13u);
        EXPECT_EQ(ConvImage(1, format, flag, dst.data(), src_.data(), width, 2), 13u);
      }
    }
  }
  EXPECT_EQ(dst, std::vector<uint8_t>(64, 9));
}

TEST_F(Dispatch, EmptyFramesSucceed) {
  std::vector<uint8_t> dst(64, 9);
  for (const uint32_t format : RoutedFormats()) {
    SCOPED_TRACE(testing::Message() << std::hex << format);
    for (const uint8_t flag : kOffOn) {
      for (const auto& [width, height] : {std::pair{0u, 4u}, std::pair{4u, 0u}, std::pair{65536u, 65536u}}) {
        EXPECT_EQ(ToBGRA(dst.data(), src_.data(), format, width, height, 0, flag, 0), 0u);
        EXPECT_EQ(ToBGR(dst.data(), src_.data(), format, width, height, 0, flag, flag), 0u);
        EXPECT_EQ(ConvImage(0, format, flag, dst.data(), src_.data(), width, height), 0u);
        EXPECT_EQ(ConvImage(2, format, flag, dst.data(), src_.data(), width, height), 0u);
      }
    }
  }
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_EQ(dst, std::vector<uint8_t>(64, 9));
}

TEST_F(Dispatch, OutputTypesEightToFifteenHaveNoRoutine) {
  for (uint32_t type = 8; type <= 15; ++type) {
    for (const uint32_t format : AllFormats()) {
      EXPECT_EQ(
          Observe([&](void* dst) { return ConvImageEx(type, format, dst, src_.data(), 12, kHeight, 0, 1); }),
          Refusal());
    }
    for (const uint32_t format : {PRISMO_MONO8_PADDED, PRISMO_BGR8_PADDED}) {
      EXPECT_EQ(Observe([&](void* dst) { return ConvImage(type, format, 1, dst, src_.data(), 12, kHeight); }),
                Refusal());
    }
  }
}

// What the getters hand out for a format: with demosaicing by the Bayer conversion mode, without it.
struct Getters {
  uint32_t format;
  PrismoConverter bilinear, adaptive, grey;
};

const Getters kBgraGetters[] = {
    {PRISMO_MONO8, ConvMono8ToBGRA, ConvMono8ToBGRA, ConvMono8ToBGRA},
    {PRISMO_MONO10, ConvMono10ToBGRA, ConvMono10ToBGRA, ConvMono10ToBGRA},
    {PRISMO_MONO12, ConvMono12ToBGRA, ConvMono12ToBGRA, ConvMono12ToBGRA},
    {PRISMO_MONO16, ConvMono16ToBGRA, ConvMono16ToBGRA, ConvMono16ToBGRA},
    {PRISMO_BAYER_GR8, ConvByrGR8ToBGRA, ConvByrGR8ToBGRAACPI, ConvMono8ToBGRA},
    {PRISMO_BAYER_RG8, ConvByrRG8ToBGRA, ConvByrRG8ToBGRAACPI, ConvMono8ToBGRA},
    {PRISMO_BAYER_GB8, ConvByrGB8ToBGRA, ConvByrGB8ToBGRAACPI, ConvMono8ToBGRA},
    {PRISMO_BAYER_BG8, ConvByrBG8ToBGRA, ConvByrBG8ToBGRAACPI, ConvMono8ToBGRA},
    {PRISMO_BAYER_GR10, ConvByrGR10ToBGRA, ConvByrGR10ToBGRA, ConvMono10ToBGRA},
    {PRISMO_BAYER_RG10, ConvByrRG10ToBGRA, ConvByrRG10ToBGRA, ConvMono10ToBGRA},
    {PRISMO_BAYER_GB10, ConvByrGB10ToBGRA, ConvByrGB10ToBGRA, ConvMono10ToBGRA},
    {PRISMO_BAYER_BG10, ConvByrBG10ToBGRA, ConvByrBG10ToBGRA, ConvMono10ToBGRA},
    {PRISMO_BAYER_GR12, ConvByrGR12ToBGRA, ConvByrGR12ToBGRA, ConvMono12ToBGRA},
    {PRISMO_BAYER_RG12, ConvByrRG12ToBGRA, ConvByrRG12ToBGRA, ConvMono12ToBGRA},
    {PRISMO_BAYER_GB12, ConvByrGB12ToBGRA, ConvByrGB12ToBGRA, ConvMono12ToBGRA},
    {PRISMO_BAYER_BG12, ConvByrBG12ToBGRA, ConvByrBG12ToBGRA, ConvMono12ToBGRA},
    {PRISMO_RGB8, ConvRGB8PToBGRA, ConvRGB8PToBGRA, ConvRGB8PToBGRA},
    {PRISMO_BGR8, ConvBGR8PToBGRA, ConvBGR8PToBGRA, ConvBGR8PToBGRA},
    {PRISMO_RGB10, ConvRGB10PToBGRA, ConvRGB10PToBGRA, ConvRGB10PToBGRA},
    {PRISMO_BGR10, ConvBGR10PToBGRA, ConvBGR10PToBGRA, ConvBGR10PToBGRA},
    {PRISMO_RGB12, ConvRGB12PToBGRA, ConvRGB12PToBGRA, ConvRGB12PToBGRA},
    {PRISMO_BGR12, ConvBGR12PToBGRA, ConvBGR12PToBGRA, ConvBGR12PToBGRA},
    {PRISMO_YUV411, ConvYUV411PToBGRA, ConvYUV411PToBGRA, ConvYUV411PToBGRA},
    {PRISMO_YUV422, ConvYUV422PToBGRA, ConvYUV422PToBGRA, ConvYUV422PToBGRA},
    {PRISMO_YUV444, ConvYUV444PToBGRA, ConvYUV444PToBGRA, ConvYUV444PToBGRA},
};

const Getters kBgrGetters[] = {
    {PRISMO_MONO8, ConvMono8ToBGR, ConvMono8ToBGR, ConvMono8ToBGR},
    {PRISMO_MONO10, ConvMono10ToBGR, ConvMono10ToBGR, ConvMono10ToBGR},
    {PRISMO_MONO12, ConvMono12ToBGR, ConvMono12ToBGR, ConvMono12ToBGR},
    {PRISMO_MONO16, ConvMono16ToBGR, ConvMono16ToBGR, ConvMono16ToBGR},
    {PRISMO_BAYER_GR8, ConvByrGR8ToBGR, ConvByrGR8ToBGRACPI, ConvMono8ToBGR},
    {PRISMO_BAYER_RG8, ConvByrRG8ToBGR, ConvByrRG8ToBGRACPI, ConvMono8ToBGR},
    {PRISMO_BAYER_GB8, ConvByrGB8ToBGR, ConvByrGB8ToBGRACPI, ConvMono8ToBGR},
    {PRISMO_BAYER_BG8, ConvByrBG8ToBGR, ConvByrBG8ToBGRACPI, ConvMono8ToBGR},
    {PRISMO_BAYER_GR10, ConvByrGR10ToBGR, ConvByrGR10ToBGR, ConvMono10ToBGR},
    {PRISMO_BAYER_RG10, ConvByrRG10ToBGR, ConvByrRG10ToBGR, ConvMono10ToBGR},
    {PRISMO_BAYER_GB10, ConvByrGB10ToBGR, ConvByrGB10ToBGR, ConvMono10ToBGR},
    {PRISMO_BAYER_BG10, ConvByrBG10ToBGR, ConvByrBG10ToBGR, ConvMono10ToBGR},
    {PRISMO_BAYER_GR12, ConvByrGR12ToBGR, ConvByrGR12ToBGR, ConvMono12ToBGR},
    {PRISMO_BAYER_RG12, ConvByrRG12ToBGR, ConvByrRG12ToBGR, ConvMono12ToBGR},
    {PRISMO_BAYER_GB12, ConvByrGB12ToBGR, ConvByrGB12ToBGR, ConvMono12ToBGR},
    {PRISMO_BAYER_BG12, ConvByrBG12ToBGR, ConvByrBG12ToBGR, ConvMono12ToBGR},
    {PRISMO_RGB8, ConvRGB8PToBGR, ConvRGB8PToBGR, ConvRGB8PToBGR},
    {PRISMO_BGR8, ConvBGR8PToBGR, ConvBGR8PToBGR, ConvBGR8PToBGR},
    {PRISMO_RGB10, ConvRGB10PToBGR, ConvRGB10PToBGR, ConvRGB10PToBGR},
    {PRISMO_BGR10, ConvBGR10PToBGR, ConvBGR10PToBGR, ConvBGR10PToBGR},
    {PRISMO_RGB12, ConvRGB12PToBGR, ConvRGB12PToBGR, ConvRGB12PToBGR},
    {PRISMO_BGR12, ConvBGR12PToBGR, ConvBGR12PToBGR, ConvBGR12PToBGR},
    {PRISMO_YUV411, ConvYUV411PToBGR, ConvYUV411PToBGR, ConvYUV411PToBGR},
    {PRISMO_YUV422, ConvYUV422PToBGR, ConvYUV422PToBGR, ConvYUV422PToBGR},
    {PRISMO_YUV444, ConvYUV444PToBGR, ConvYUV444PToBGR, ConvYUV444PToBGR},
};

// The converter of a table, or null.
PrismoConverter Expected(std::span<const Getters> table, uint32_t format, uint8_t demosaic,
                         int32_t bayer_mode) {
  const auto found = std::ranges::find(table, format, &Getters::format);
  if (found == table.end()) return nullptr;
  return !demosaic ? found->grey : bayer_mode == 1 ? found->adaptive : found->bilinear;
}

TEST_F(Dispatch, GettersHandOutTheExportedConverters) {
  for (const int32_t bayer_mode : {0, 1, 2, 8, -1}) {
    SetBayerConvMode(bayer_mode);
    for (const uint32_t format : AllFormats()) {
      if (format == PRISMO_BGRA8) continue;
      for (const uint8_t demosaic : std::vector<uint8_t>{0, 1, 255}) {
        SCOPED_TRACE(testing::Message()
                     << std::hex << format << ", demosaic " << int{demosaic} << ", mode " << bayer_mode);
        EXPECT_EQ(GetBGRAConverter(format, demosaic), Expected(kBgraGetters, format, demosaic, bayer_mode));
        EXPECT_EQ(GetBGRConverter(format, demosaic), Expected(kBgrGetters, format, demosaic, bayer_mode));
      }
    }
  }
}

TEST_F(Dispatch, BgraHasConvertersButNoRoutes) {
  for (const uint8_t demosaic : kOffOn) {
    const PrismoConverter to_bgra = GetBGRAConverter(PRISMO_BGRA8, demosaic);
    const PrismoConverter to_bgr = GetBGRConverter(PRISMO_BGRA8, demosaic);
    ASSERT_TRUE(to_bgra && to_bgr);
    EXPECT_EQ(ObserveConverter(to_bgra, 10), ObserveRoutine("BGRA8ToBGRA_SP", 10, 0, 0));
    EXPECT_EQ(ObserveConverter(to_bgr, 10), ObserveRoutine("BGRA8ToBGR_SP", 10, 0, 0));
    EXPECT_EQ(Observe([&](void* dst) {
                return ConvImage(0, PRISMO_BGRA8, demosaic, dst, src_.data(), 10, kHeight);
              }),
              ObserveRoutine("BGRA8ToBGRA_SP", 10, 0, 0));
    EXPECT_EQ(Observe([&](void* dst) {
                return ConvImage(1, PRISMO_BGRA8, demosaic, dst, src_.data(), 10, kHeight);
              }),
              ObserveRoutine("BGRA8ToBGR_SP", 10, 0, 0));
    std::vector<uint8_t> dst(64, 9);
    for (const PrismoConverter converter : {to_bgra, to_bgr}) {
      EXPECT_EQ(converter(nullptr, src_.data(), 2, 2), 13u);
      EXPECT_EQ(converter(dst.data(), nullptr, 2, 2), 13u);
      EXPECT_EQ(converter(dst.data(), src_.data(), 0, 2), 0u);
    }
    EXPECT_EQ(dst, std::vector<uint8_t>(64, 9));
  }
}

// Output type 1 takes a BGR converter, type 2 and padded formats the routes, all else a BGRA converter.
TEST_F(Dispatch, ConvImage) {
  PRISMO_TRACE_SEED();
  const auto expected = [&](uint32_t type, uint32_t format, uint8_t demosaic) {
    const uint32_t width = WidthFor(format);
    const bool padded = format == PRISMO_BGR8_PADDED || format == PRISMO_MONO8_PADDED;
    if (type == 1 && format != PRISMO_BGR8_PADDED) {
      const PrismoConverter converter = GetBGRConverter(format, demosaic);
      return converter ? ObserveConverter(converter, width) : Refusal();
    }
    if (type == 1 || type == 2 || padded) {
      const uint32_t method = demosaic ? static_cast<uint32_t>(GetBayerConvMode()) : 8;
      return Observe([&](void* dst) {
        return ConvImageEx(type, format, dst, src_.data(), width, kHeight, method, GetProcMode() != 0);
      });
    }
    const PrismoConverter converter = GetBGRAConverter(format, demosaic);
    return converter ? ObserveConverter(converter, width) : Refusal();
  };
  for (const int32_t mode : {0, 1, 2}) {
    for (const int32_t bayer_mode : {0, 1, 8}) {
      SetProcMode(mode);
      SetBayerConvMode(bayer_mode);
      for (const uint32_t format : AllFormats()) {
        for (const uint32_t type : {0u, 1u, 2u, 3u, 9u, 16u}) {
          for (const uint8_t demosaic : std::vector<uint8_t>{0, 2}) {
            SCOPED_TRACE(testing::Message()
                         << std::hex << format << ", type " << type << ", demosaic " << int{demosaic}
                         << ", mode " << mode << ", Bayer mode " << bayer_mode);
            EXPECT_EQ(Observe([&](void* dst) {
                        return ConvImage(type, format, demosaic, dst, src_.data(), WidthFor(format), kHeight);
                      }),
                      expected(type, format, demosaic));
          }
        }
      }
      if (HasFailure()) return;
    }
  }
}

TEST_F(Dispatch, ConvImageOfABayerFrame) {
  SetProcMode(0);
  SetBayerConvMode(1);
  const auto convert = [&](uint32_t type, uint32_t format, uint8_t demosaic) {
    return Observe(
        [&](void* dst) { return ConvImage(type, format, demosaic, dst, src_.data(), 10, kHeight); });
  };
  EXPECT_EQ(convert(0, PRISMO_BAYER_BG8, 1), ObserveRoutine("ByrBG8ToBGRA_SP_ACPI", 10, 0, 0));
  EXPECT_EQ(convert(0, PRISMO_BAYER_BG8, 0), ObserveRoutine("Mono8ToBGRA_SP", 10, 0, 0));
  EXPECT_EQ(convert(2, PRISMO_BAYER_BG8, 1), ObserveRoutine("ByrBG8ToBGR_SP_ACPI", 10, 0, 1));
  EXPECT_EQ(convert(2, PRISMO_BAYER_BG8, 0), ObserveRoutine("Mono8ToBGR_SP", 10, 0, 1));
  EXPECT_EQ(convert(9, PRISMO_RGB8, 0), ObserveRoutine("RGB8PToBGRA_SP", 10, 0, 0));
  // Output type 2 hands the mode on as the method, and 8 means no demosaicing there.
  SetBayerConvMode(8);
  EXPECT_EQ(convert(2, PRISMO_BAYER_BG8, 1), ObserveRoutine("Mono8ToBGR_SP", 10, 0, 1));
  EXPECT_EQ(convert(0, PRISMO_BAYER_BG8, 1), ObserveRoutine("ByrBG8ToBGRA_SP", 10, 0, 0));
  // A mode of 2 is the caller's thread for the converters, the pool for the routes.
  SetProcMode(2);
  EXPECT_FALSE(convert(1, PRISMO_BAYER_GR8, 1).pool);
  EXPECT_TRUE(convert(2, PRISMO_BAYER_GR8, 1).pool);
}

TEST_F(Dispatch, OneGreyBayerFrameUsesThePool) {
  EXPECT_EQ(
      Observe([&](void* dst) { return ToBGRA(dst, src_.data(), PRISMO_BAYER_RG12, 10, kHeight, 8, 1, 0); }),
      ObserveRoutine("MonoNToBGRA_MP", 10, 4, 0));
  EXPECT_EQ(
      Observe([&](void* dst) { return ToBGRA(dst, src_.data(), PRISMO_BAYER_BG12, 10, kHeight, 8, 1, 0); }),
      ObserveRoutine("MonoNToBGRA_SP", 10, 4, 0));
}

}  // namespace
}  // namespace prismo::test

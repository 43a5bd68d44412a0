// The generic conversions: which routine each pixel format, method and choice of threads leads to.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "PrismoUtl.h"
#include "support/generators.h"
#include "support/pool.h"

namespace prismo::test {
namespace {

constexpr uint32_t kWidth = 20;
constexpr uint32_t kPadWidth = 18;  // has pad bytes
constexpr uint32_t kHeight = 16;

using Routine =
    std::function<uint32_t(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t pad)>;

struct Routing {
  uint32_t format;
  uint32_t method;
  Routine bgra;
  bool bgra_on_pool;
  Routine bgr;
  bool bgr_on_pool;
};

template <auto kRoutine>
Routine Bgra8() {
  return [](void* d, const void* s, uint32_t w, uint32_t h, uint8_t) { return kRoutine(d, s, w, h); };
}
template <auto kRoutine>
Routine BgraN(uint8_t shift) {
  return [shift](void* d, const void* s, uint32_t w, uint32_t h, uint8_t) {
    return kRoutine(d, s, w, h, shift);
  };
}
template <auto kRoutine>
Routine Bgr8() {
  return
      [](void* d, const void* s, uint32_t w, uint32_t h, uint8_t pad) { return kRoutine(d, s, w, h, pad); };
}
template <auto kRoutine>
Routine BgrN(uint8_t shift) {
  return [shift](void* d, const void* s, uint32_t w, uint32_t h, uint8_t pad) {
    return kRoutine(d, s, w, h, shift, pad);
  };
}
Routine GreyBgra8() {
  return
      [](void* d, const void* s, uint32_t w, uint32_t h, uint8_t) { return Mono8ToBGRA_SP(d, s, w, h, 0); };
}
Routine GreyBgraN(uint8_t shift) {
  return [shift](void* d, const void* s, uint32_t w, uint32_t h, uint8_t) {
    return MonoNToBGRA_SP(d, s, w, h, shift, 0);
  };
}
Routine GreyBgr8() {
  return [](void* d, const void* s, uint32_t w, uint32_t h, uint8_t pad) {
    return Mono8ToBGR_SP(d, s, w, static_cast<int32_t>(h), pad);
  };
}
Routine GreyBgrN(uint8_t shift) {
  return [shift](void* d, const void* s, uint32_t w, uint32_t h, uint8_t pad) {
    return MonoNToBGR_SP(d, s, static_cast<int32_t>(w), static_cast<int32_t>(h), shift, pad);
  };
}

template <auto kBgra, auto kBgra_Adaptive, auto kBgr, auto kBgr_Adaptive>
void AddBayer8(std::vector<Routing>& all, uint32_t format) {
  for (const uint32_t method : {0u, 2u, 7u, 9u})
    all.push_back({format, method, Bgra8<kBgra>(), true, Bgr8<kBgr>(), true});
  all.push_back({format, 1, Bgra8<kBgra_Adaptive>(), true, Bgr8<kBgr_Adaptive>(), true});
  all.push_back({format, 8, GreyBgra8(), false, GreyBgr8(), true});
}

template <auto kBgra, auto kBgr>
void AddBayerN(std::vector<Routing>& all, uint32_t format10, uint32_t format12) {
  for (const uint32_t method : {0u, 1u, 9u}) {
    all.push_back({format10, method, BgraN<kBgra>(2), true, BgrN<kBgr>(2), true});
    all.push_back({format12, method, BgraN<kBgra>(4), true, BgrN<kBgr>(4), true});
  }
  // The one grey Bayer format that goes to BGRA on the pool.
  const bool pool = format12 == PRISMO_BAYER_RG12;
  all.push_back({format10, 8, GreyBgraN(2), false, GreyBgrN(2), true});
  all.push_back({format12, 8, GreyBgraN(4), pool, GreyBgrN(4), true});
}

std::vector<Routing> AllRoutings() {
  std::vector<Routing> all;
  for (const uint32_t method : {0u, 1u, 8u}) {
    all.push_back({PRISMO_MONO8, method, GreyBgra8(), false, GreyBgr8(), true});
    all.push_back({PRISMO_MONO10, method, GreyBgraN(2), false, GreyBgrN(2), true});
    all.push_back({PRISMO_MONO12, method, GreyBgraN(4), false, GreyBgrN(4), true});
    all.push_back({PRISMO_MONO16, method, GreyBgraN(8), false, GreyBgrN(8), true});
    all.push_back({PRISMO_RGB8, method, Bgra8<RGB8PToBGRA_SP>(), true, Bgr8<RGB8PToBGR_SP>(), true});
    all.push_back({PRISMO_BGR8, method, Bgra8<BGR8PToBGRA_SP>(), true, Bgr8<BGR8PToBGR_SP>(), false});
    all.push_back({PRISMO_RGB10, method, BgraN<RGBNToBGRA_SP>(2), true, BgrN<RGBNToBGR_SP>(2), true});
    all.push_back({PRISMO_RGB12, method, BgraN<RGBNToBGRA_SP>(4), true, BgrN<RGBNToBGR_SP>(4), true});
    all.push_back({PRISMO_BGR10, method, BgraN<BGRNToBGRA_SP>(2), true, BgrN<BGRNToBGR_SP>(2), true});
    all.push_back({PRISMO_BGR12, method, BgraN<BGRNToBGRA_SP>(4), true, BgrN<BGRNToBGR_SP>(4), true});
    all.push_back({PRISMO_YUV411, method, Bgra8<YUV411PToBGRA_SP>(), true, Bgr8<YUV411PToBGR_SP>(), true});
    all.push_back({PRISMO_YUV422, method, Bgra8<YUV422PToBGRA_SP>(), true, Bgr8<YUV422PToBGR_SP>(), true});
    all.push_back({PRISMO_YUV444, method, Bgra8<YUV444PToBGRA_SP>(), true, Bgr8<YUV444PToBGR_SP>(), true});
  }
  AddBayer8<ByrGR8ToBGRA_SP, ByrGR8ToBGRA_SP_ACPI, ByrGR8ToBGR_SP, ByrGR8ToBGR_SP_ACPI>(all,
                                                                                        PRISMO_BAYER_GR8);
  AddBayer8<ByrRG8ToBGRA_SP, ByrRG8ToBGRA_SP_ACPI, ByrRG8ToBGR_SP, ByrRG8ToBGR_SP_ACPI>(all,
                                                                                        PRISMO_BAYER_RG8);
  AddBayer8<ByrGB8ToBGRA_SP, ByrGB8ToBGRA_SP_ACPI, ByrGB8ToBGR_SP, ByrGB8ToBGR_SP_ACPI>(all,
                                                                                        PRISMO_BAYER_GB8);
  AddBayer8<ByrBG8ToBGRA_SP, ByrBG8ToBGRA_SP_ACPI, ByrBG8ToBGR_SP, ByrBG8ToBGR_SP_ACPI>(all,
                                                                                        PRISMO_BAYER_BG8);
  AddBayerN<ByrGRNToBGRA_SP, ByrGRNToBGR_SP>(all, PRISMO_BAYER_GR10, PRISMO_BAYER_GR12);
  AddBayerN<ByrRGNToBGRA_SP, ByrRGNToBGR_SP>(all, PRISMO_BAYER_RG10, PRISMO_BAYER_RG12);
  AddBayerN<ByrGBNToBGRA_SP, ByrGBNToBGR_SP>(all, PRISMO_BAYER_GB10, PRISMO_BAYER_GB12);
  AddBayerN<ByrBGNToBGRA_SP, ByrBGNToBGR_SP>(all, PRISMO_BAYER_BG10, PRISMO_BAYER_BG12);
  return all;
}

class GenericConversion : public PoolTest {
 protected:
  GenericConversion() {
    PrepareLUT();
    const uint32_t samples = 3 * kWidth * kHeight;
    bytes_ = MakeSamples(Pattern::kRandom, samples, 1, 8, random_);
    words10_ = MakeSamples(Pattern::kRandom, samples, 1, 10, random_);
    words12_ = MakeSamples(Pattern::kRandom, samples, 1, 12, random_);
    words16_ = MakeSamples(Pattern::kRandom, samples, 1, 16, random_);
  }

  // Samples within the depth of a format.
  const uint8_t* Frame(uint32_t format) const {
    switch (DataDepth(format)) {
      case 10:
        return words10_.data();
      case 12:
        return words12_.data();
      case 16:
        return words16_.data();
      default:
        return bytes_.data();
    }
  }

  using Call = std::function<uint32_t(void* dst)>;

  std::vector<uint8_t> Output(const Call& call, uint32_t status = UTL_STS_SUCCESS) const {
    std::vector<uint8_t> dst(4 * kWidth * kHeight, 0xA5);
    EXPECT_EQ(call(dst.data()), status);
    return dst;
  }

  // The call gives what the routine gives, and uses the pool or does not.
  void ExpectRoute(const Call& call, const Call& routine, bool pool) {
    const std::vector<uint8_t> expected = Output(routine);
    TerminateMPThreads();
    EXPECT_EQ(Output(call), expected);
    EXPECT_EQ(!IsMPMngrNULL(), pool);
  }

  Random random_{Seed()};
  std::vector<uint8_t> bytes_, words10_, words12_, words16_;
};

TEST_F(GenericConversion, EveryRoute) {
  PRISMO_TRACE_SEED();
  for (const Routing& r : AllRoutings()) {
    SCOPED_TRACE(testing::Message() << std::hex << r.format << ", method " << r.method);
    const uint8_t* src = Frame(r.format);
    const Call bgra = [&](void* dst) { return r.bgra(dst, src, kWidth, kHeight, 0); };
    const auto bgr = [&](uint32_t width, uint8_t pad) {
      return Call([&r, src, width, pad](void* dst) { return r.bgr(dst, src, width, kHeight, pad); });
    };
    for (const uint8_t threads : std::initializer_list<uint8_t>{0, 1, 2}) {
      const bool pool = threads != 0;
      SCOPED_TRACE(testing::Message() << "multiThread " << int{threads});
      ExpectRoute(
          [&](void* dst) { return ToBGRA(dst, src, r.format, kWidth, kHeight, r.method, threads, 0); }, bgra,
          pool && r.bgra_on_pool);
      ExpectRoute([&](void* dst) { return ToBGR(dst, src, r.format, kWidth, kHeight, r.method, threads, 0); },
                  bgr(kWidth, 0), pool && r.bgr_on_pool);
      for (const uint32_t type : {0u, 3u, 7u, 16u, 0xFFFFFFFFu}) {
        ExpectRoute(
            [&](void* dst) {
              return ConvImageEx(type, r.format, dst, src, kWidth, kHeight, r.method, threads);
            },
            bgra, pool && r.bgra_on_pool);
      }
      ExpectRoute(
          [&](void* dst) { return ConvImageEx(1, r.format, dst, src, kWidth, kHeight, r.method, threads); },
          bgr(kWidth, 0), pool && r.bgr_on_pool);
      if (r.format == PRISMO_YUV411) continue;  // every width that it can hold needs no pad bytes
      ExpectRoute(
          [&](void* dst) { return ToBGR(dst, src, r.format, kPadWidth, kHeight, r.method, threads, 1); },
          bgr(kPadWidth, 1), pool && r.bgr_on_pool);
      ExpectRoute(
          [&](void* dst) {
            return ConvImageEx(2, r.format, dst, src, kPadWidth, kHeight, r.method, threads);
          },
          bgr(kPadWidth, 1), pool && r.bgr_on_pool);
    }
    if (HasFailure()) return;
  }
}

// Words beyond the format's depth tell the pooled grey form from the other.
TEST_F(GenericConversion, GreyBayerRG12AloneDoesNotMaskOnThePool) {
  const std::vector<uint16_t> words(kWidth * kHeight, 0x1230);
  const auto pixel = [&](uint32_t format) {
    std::vector<uint32_t> dst(kWidth * kHeight);
    EXPECT_EQ(ToBGRA(dst.data(), words.data(), format, kWidth, kHeight, 8, 1, 0), UTL_STS_SUCCESS);
    return dst[0];
  };
  EXPECT_EQ(pixel(PRISMO_BAYER_RG12), 0xFF000000u + 0x123u * 0x010101u);
  EXPECT_EQ(pixel(PRISMO_BAYER_BG12), 0xFF232323u);
}

TEST_F(GenericConversion, FormatsWithoutRouteAreRefused) {
  uint8_t dst = 0x5A;
  for (const uint32_t format : {PRISMO_BGRA8, PRISMO_BGRA10, 0u, 0x12345678u}) {
    for (const uint8_t threads : std::initializer_list<uint8_t>{0, 1}) {
      // The format is looked up before the size.
      for (const uint32_t side : {1u, 0u}) {
        EXPECT_EQ(ToBGRA(&dst, bytes_.data(), format, side, side, 0, threads, 0), UTL_STS_INVALID_PARAMETER);
        EXPECT_EQ(ToBGR(&dst, bytes_.data(), format, side, side, 0, threads, 1), UTL_STS_INVALID_PARAMETER);
        for (const uint32_t type : {0u, 1u, 2u}) {
          EXPECT_EQ(ConvImageEx(type, format, &dst, bytes_.data(), side, side, 0, threads),
                    UTL_STS_INVALID_PARAMETER);
        }
      }
    }
  }
  for (const uint32_t type : {0u, 1u, 2u}) {
    EXPECT_EQ(ConvImage(type, PRISMO_BGRA10, 1, &dst, bytes_.data(), 1, 1), UTL_STS_INVALID_PARAMETER);
  }
  EXPECT_EQ(ConvImage(2, PRISMO_BGRA8, 1, &dst, bytes_.data(), 1, 1), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(dst, 0x5A);
}

TEST_F(GenericConversion, OutputTypes8To15) {
  for (uint32_t type = 8; type <= 15; ++type) {
    EXPECT_EQ(ConvImageEx(type, PRISMO_RGB8, nullptr, nullptr, 1, 1, 0, 0), UTL_STS_INVALID_PARAMETER);
    ExpectRoute(
        [&](void* dst) { return ConvImage(type, PRISMO_RGB8, 1, dst, bytes_.data(), kWidth, kHeight); },
        [&](void* dst) { return RGB8PToBGRA_SP(dst, bytes_.data(), kWidth, kHeight); }, true);
    for (const uint32_t format : {PRISMO_MONO8_PADDED, PRISMO_BGR8_PADDED}) {
      const std::vector<uint8_t> untouched(4 * kWidth * kHeight, 0xA5);
      EXPECT_EQ(
          Output([&](void* dst) { return ConvImage(type, format, 1, dst, bytes_.data(), kWidth, kHeight); },
                 UTL_STS_INVALID_PARAMETER),
          untouched);
    }
  }
}

TEST_F(GenericConversion, ConvImageFollowsTheSettings) {
  const uint8_t* src = bytes_.data();
  const auto image = [&](uint32_t type, uint8_t demosaic, uint32_t format = PRISMO_BAYER_BG8) {
    return Call([=](void* dst) { return ConvImage(type, format, demosaic, dst, src, kWidth, kHeight); });
  };
  const auto with = [&](auto routine, auto... extra) {
    return Call(
        [=](void* dst) { return routine(dst, src, kWidth, kHeight, static_cast<uint8_t>(extra)...); });
  };
  for (const int32_t mode : {0, 1, 2}) {
    const bool converters_use_pool = mode == 1;
    const bool routes_use_pool = mode != 0;
    SetProcMode(mode);
    SetBayerConvMode(0);
    ExpectRoute(image(0, 1), with(ByrBG8ToBGRA_SP), converters_use_pool);
    ExpectRoute(image(1, 1), with(ByrBG8ToBGR_SP, 0), converters_use_pool);
    ExpectRoute(image(2, 1), with(ByrBG8ToBGR_SP, 1), routes_use_pool);
    SetBayerConvMode(1);
    ExpectRoute(image(0, 1), with(ByrBG8ToBGRA_SP_ACPI), converters_use_pool);
    ExpectRoute(image(1, 1), with(ByrBG8ToBGR_SP_ACPI, 0), converters_use_pool);
    ExpectRoute(image(2, 1), with(ByrBG8ToBGR_SP_ACPI, 1), routes_use_pool);
    ExpectRoute(image(0, 0), with(Mono8ToBGRA_SP, 0), false);
    ExpectRoute(image(1, 0), with(Mono8ToBGR_SP, 0), converters_use_pool);
    ExpectRoute(image(2, 0), with(Mono8ToBGR_SP, 1), routes_use_pool);
    // As a method 8 means that nothing is demosaiced; as a mode it is like any other but 1.
    SetBayerConvMode(8);
    ExpectRoute(image(2, 1), with(Mono8ToBGR_SP, 1), routes_use_pool);
    ExpectRoute(image(0, 1), with(ByrBG8ToBGRA_SP), converters_use_pool);
    ExpectRoute(image(2, 1, PRISMO_BGR8), with(BGR8PToBGR_SP, 1), false);
  }
}

TEST_F(GenericConversion, PaddedMono) {
  // Rows of 5 pixels and 3 pad bytes.
  const std::vector<uint8_t> src = {1, 2, 3, 4, 5, 99, 99, 99, 6, 7, 8, 9, 10, 99, 99, 99};
  const auto run = [&](const std::function<uint32_t(void*)>& call, size_t bytes) {
    std::vector<uint8_t> dst(bytes + 1, 0xEE);
    EXPECT_EQ(call(dst.data()), UTL_STS_SUCCESS);
    EXPECT_EQ(dst.back(), 0xEE);
    dst.pop_back();
    return dst;
  };
  std::vector<uint8_t> bgra, bgr, padded;
  for (uint8_t y = 1; y <= 10; ++y) {
    bgra.insert(bgra.end(), {y, y, y, 255});
    bgr.insert(bgr.end(), {y, y, y});
    padded.insert(padded.end(), {y, y, y});
    if (y % 5 == 0) padded.push_back(0xEE);  // left as it was
  }
  for (const uint8_t threads : std::initializer_list<uint8_t>{0, 1}) {
    EXPECT_EQ(
        run([&](void* d) { return ToBGRA(d, src.data(), PRISMO_MONO8_PADDED, 5, 2, 0, threads, 0); }, 40),
        bgra);
    EXPECT_EQ(
        run([&](void* d) { return ToBGR(d, src.data(), PRISMO_MONO8_PADDED, 5, 2, 0, threads, 0); }, 30),
        bgr);
    EXPECT_EQ(
        run([&](void* d) { return ToBGR(d, src.data(), PRISMO_MONO8_PADDED, 5, 2, 0, threads, 1); }, 32),
        padded);
  }
  EXPECT_EQ(run([&](void* d) { return ConvImage(0, PRISMO_MONO8_PADDED, 0, d, src.data(), 5, 2); }, 40),
            bgra);
  EXPECT_EQ(run([&](void* d) { return ConvImage(2, PRISMO_MONO8_PADDED, 1, d, src.data(), 5, 2); }, 32),
            padded);
  // The converter table, which output type 1 asks, does not know the format.
  std::vector<uint8_t> dst(30, 0xEE);
  EXPECT_EQ(ConvImage(1, PRISMO_MONO8_PADDED, 1, dst.data(), src.data(), 5, 2), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(dst, std::vector<uint8_t>(30, 0xEE));
  EXPECT_TRUE(IsMPMngrNULL());
}

TEST_F(GenericConversion, PaddedBgr) {
  // Rows of 3 pixels and 3 pad bytes.
  const std::vector<uint8_t> src = {1,  2,  3,  4,  5,  6,  7,  8,  9,  99, 98, 97,
                                    11, 12, 13, 14, 15, 16, 17, 18, 19, 89, 88, 87};
  const std::vector<uint8_t> bgra = {1,  2,  3,  255, 4,  5,  6,  255, 7,  8,  9,  255,
                                     11, 12, 13, 255, 14, 15, 16, 255, 17, 18, 19, 255};
  const std::vector<uint8_t> bgr = {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19};
  for (const uint8_t threads : std::initializer_list<uint8_t>{0, 1}) {
    std::vector<uint8_t> dst(24);
    EXPECT_EQ(ToBGRA(dst.data(), src.data(), PRISMO_BGR8_PADDED, 3, 2, 8, threads, 0), UTL_STS_SUCCESS);
    EXPECT_EQ(dst, bgra);
    EXPECT_EQ(ToBGR(dst.data(), src.data(), PRISMO_BGR8_PADDED, 3, 2, 0, threads, 1), UTL_STS_SUCCESS);
    EXPECT_EQ(dst, src);  // pad bytes and all
    dst.assign(18, 0);
    EXPECT_EQ(ToBGR(dst.data(), src.data(), PRISMO_BGR8_PADDED, 3, 2, 0, threads, 0), UTL_STS_SUCCESS);
    EXPECT_EQ(dst, bgr);
    EXPECT_EQ(ConvImage(1, PRISMO_BGR8_PADDED, 1, dst.data(), src.data(), 3, 2), UTL_STS_SUCCESS);
    EXPECT_EQ(dst, bgr);
  }
  EXPECT_TRUE(IsMPMngrNULL());
}

TEST_F(GenericConversion, EmptyFramesOfPaddedFormatsTouchNothing) {
  for (const uint32_t format : {PRISMO_MONO8_PADDED, PRISMO_BGR8_PADDED}) {
    for (const uint32_t width : {0u, 5u, 65536u}) {
      const uint32_t height = width == 5 ? 0 : 65536;
      EXPECT_EQ(ToBGRA(nullptr, nullptr, format, width, height, 0, 1, 0), UTL_STS_SUCCESS);
      EXPECT_EQ(ToBGR(nullptr, nullptr, format, width, height, 0, 1, 0), UTL_STS_SUCCESS);
      EXPECT_EQ(ToBGR(nullptr, nullptr, format, width, height, 0, 1, 1), UTL_STS_SUCCESS);
    }
  }
}

}  // namespace
}  // namespace prismo::test

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <vector>

#include "kernel/planes_checks.h"

namespace prismo::test {
namespace {

using PackedPlanes = PlanesTest;
using GenericPlanes = PlanesTest;

TEST_F(PackedPlanes, EveryWidthEqualsTheReference) {
  PRISMO_TRACE_SEED();
  ASSERT_TRUE(StartPool(1));
  for (const PackedPlanesRoutine& routine : PackedPlanesRoutines()) {
    for (const uint32_t width : Widths()) {
      CheckPacked(routine, width, routine.on == On::kPool ? 2 : 1 + width % 3, width % 8 >= 4, 1);
      if (HasFailure()) return;
    }
    // Streamed at several places by turns, on all targets.
    for (int i = 0; i < 4; ++i) CheckPacked(routine, 8192, 2, false, 1);
  }
}

TEST_F(PackedPlanes, PoolEqualsTheReferenceForEveryDivision) {
  PRISMO_TRACE_SEED();
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads));
    for (const PackedPlanesRoutine& routine : PackedPlanesRoutines()) {
      if (routine.on != On::kPool) continue;
      for (uint32_t height = 2; height <= 60; height += height < 12 ? 1 : 7) {
        if (!reference::SplitRows(0, static_cast<int32_t>(height) - 1, threads, 2).finishes) continue;
        for (const bool pad : {false, true}) CheckPacked(routine, 5 + height % 4, height, pad, threads);
        if (HasFailure()) return;
      }
    }
  }
}

TEST_F(PackedPlanes, OnePixelAndPadOfWidthFive) {
  const std::vector<uint8_t> pixel{0x10, 0x20, 0x30};
  uint8_t b = 0, g = 0, r = 0;
  EXPECT_EQ(ConvImagePlanarEx(PRISMO_RGB8, &b, &g, &r, pixel.data(), 1, 1, 0, 0), 0u);
  EXPECT_EQ(b, 0x30);
  EXPECT_EQ(g, 0x20);
  EXPECT_EQ(r, 0x10);

  const std::vector<uint8_t> frame(30, 7);
  std::vector<uint8_t> planes[3];
  for (auto& plane : planes) plane.assign(17, 9);
  EXPECT_EQ(ConvImagePlanarEx(PRISMO_BGR8, planes[0].data(), planes[1].data(), planes[2].data(), frame.data(),
                              5, 2, 0, 1),
            0u);
  for (const auto& plane : planes) {
    EXPECT_EQ(plane, (std::vector<uint8_t>{7, 7, 7, 7, 7, 0, 0, 0, 7, 7, 7, 7, 7, 0, 0, 0, 9}));
  }
}

TEST_F(PackedPlanes, RefusalsComeInOrder) {
  std::vector<uint8_t> src(64, 3), b(64, 9), g(64, 9), r(64, 9);
  const std::vector<uint8_t> before = b;
  for (const PackedPlanesRoutine& routine : PackedPlanesRoutines()) {
    SCOPED_TRACE(routine.name);
    for (const uint8_t pad : kOffOn) {
      EXPECT_EQ(routine.call(nullptr, g.data(), r.data(), src.data(), 4, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), nullptr, r.data(), src.data(), 4, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), g.data(), nullptr, src.data(), 4, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), nullptr, 4, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 0, 4, pad), 0u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 5, 0, pad), 0u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 65536, 65536, 0), 0u);
    }
  }
  EXPECT_EQ(RGB8PToBGRPlanar_SP(b.data(), g.data(), r.data(), src.data(), 5, -1, 1), 0u);
  EXPECT_EQ(BGR8PToBGRPlanar_SP(b.data(), g.data(), r.data(), src.data(), -5, 1, 0), 0u);
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_EQ(b, before);
  EXPECT_EQ(g, before);
  EXPECT_EQ(r, before);
}

// The six formats, on the caller and on the pool, with and without padding.
TEST_F(GenericPlanes, FormatsAndThreads) {
  PRISMO_TRACE_SEED();
  constexpr uint32_t kWidth = 6, kHeight = 40;
  const std::vector<uint8_t> src = RandomBytes(3 * kWidth * kHeight, random_);
  struct Format {
    uint32_t code;
    std::function<uint32_t(const Planes&, bool pad, bool pool)> direct;
  };
  std::vector<Format> formats;
  for (const auto& [code, phase] :
       {std::pair{PRISMO_BAYER_BG8, Phase::kBg}, std::pair{PRISMO_BAYER_GB8, Phase::kGb},
        std::pair{PRISMO_BAYER_GR8, Phase::kGr}, std::pair{PRISMO_BAYER_RG8, Phase::kRg}}) {
    formats.push_back({code, [&src, phase](const Planes& planes, bool pad, bool pool) {
                         for (const BayerPlanesRoutine& routine : BayerPlanesRoutines()) {
                           if (routine.phase == phase && (routine.on == On::kPool) == pool) {
                             return routine.call(planes.b, planes.g, planes.r, src.data(), kWidth, kHeight,
                                                 pad);
                           }
                         }
                         return 1u;
                       }});
  }
  for (const auto& [code, order] :
       {std::pair{PRISMO_RGB8, PackedFrame::Order::kRgb}, std::pair{PRISMO_BGR8, PackedFrame::Order::kBgr}}) {
    formats.push_back({code, [&src, order](const Planes& planes, bool pad, bool pool) {
                         for (const PackedPlanesRoutine& routine : PackedPlanesRoutines()) {
                           if (routine.order == order && (routine.on == On::kPool) == pool) {
                             return routine.call(planes.b, planes.g, planes.r, src.data(), kWidth, kHeight,
                                                 pad);
                           }
                         }
                         return 1u;
                       }});
  }

  using Buffers = std::array<std::vector<uint8_t>, 3>;
  Buffers blank;
  for (auto& plane : blank) plane.assign(8 * kHeight, 9);
  const auto run = [&](auto&& call, bool pool) {
    Buffers planes = blank;
    EXPECT_EQ(UsesPool([&] {
                EXPECT_EQ(call(Planes{planes[0].data(), planes[1].data(), planes[2].data()}), 0u);
              }),
              pool);
    return planes;
  };
  for (const Format& format : formats) {
    for (const bool pad : {false, true}) {
      for (const bool pool : {false, true}) {
        SCOPED_TRACE(testing::Message() << std::hex << format.code << " pad " << pad << " pool " << pool);
        const Buffers expected = run([&](const Planes& p) { return format.direct(p, pad, pool); }, pool);
        EXPECT_EQ(run(
                      [&](const Planes& p) {
                        return ConvImagePlanarEx(format.code, p.b, p.g, p.r, src.data(), kWidth, kHeight,
                                                 pool, pad);
                      },
                      pool),
                  expected);
        if (pad) continue;
        for (const int32_t mode : {0, 1, 2, 7}) {
          if ((mode == 1) != pool) continue;
          SetProcMode(mode);
          EXPECT_EQ(run(
                        [&](const Planes& p) {
                          return ConvImagePlanar(format.code, p.b, p.g, p.r, src.data(), kWidth, kHeight);
                        },
                        pool),
                    expected);
          if (!IsPixelBayer(format.code)) continue;
          EXPECT_EQ(run(
                        [&](const Planes& p) {
                          return ConvertBayerFS(format.code, p.b, p.g, p.r, src.data(), kWidth, kHeight);
                        },
                        pool),
                    expected);
        }
      }
    }
  }
}

TEST_F(GenericPlanes, OtherFormatsAreRefused) {
  std::vector<uint8_t> src(64, 3), b(64, 9), g(64, 9), r(64, 9);
  const std::vector<uint8_t> before = b;
  for (const uint32_t format : {PRISMO_MONO8, PRISMO_BAYER_BG10, PRISMO_BAYER_GR12, PRISMO_RGB10,
                                PRISMO_BGRA8, PRISMO_YUV444, PRISMO_BGR8_PADDED, PRISMO_MONO8_PADDED, 0u}) {
    for (const uint32_t width : {4u, 0u}) {
      EXPECT_EQ(ConvImagePlanar(format, b.data(), g.data(), r.data(), src.data(), width, 4), 13u);
      EXPECT_EQ(ConvImagePlanarEx(format, b.data(), g.data(), r.data(), src.data(), width, 4, 0, 1), 13u);
      EXPECT_EQ(ConvImagePlanarEx(format, b.data(), g.data(), r.data(), src.data(), width, 4, 1, 0), 13u);
      EXPECT_EQ(ConvertBayerFS(format, b.data(), g.data(), r.data(), src.data(), width, 4), 13u);
    }
  }
  for (const uint32_t format : {PRISMO_RGB8, PRISMO_BGR8}) {
    EXPECT_EQ(ConvertBayerFS(format, b.data(), g.data(), r.data(), src.data(), 4, 4), 13u);
  }
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_EQ(b, before);
  EXPECT_EQ(g, before);
  EXPECT_EQ(r, before);
}

}  // namespace
}  // namespace prismo::test

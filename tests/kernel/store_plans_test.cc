// Targets that are stored partly in the one kind of store and partly in the other have the bytes that plain
// stores give.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "simd/stores.h"
#include "support/generators.h"
#include "support/guarded_buffer.h"
#include "support/planes_routines.h"
#include "support/pool.h"
#include "support/routines.h"
#include "support/sweeps.h"
#include "support/targets.h"

namespace prismo::test {
namespace {

// Rows that are whole groups of every format and end on no line of memory, and rows that want padding; pieces
// of three rows or a thousand pixels.
constexpr uint32_t kWidths[] = {332, 330};
constexpr uint32_t kHeight = 80;
constexpr size_t kPiecePixels = 1000;
constexpr size_t kPixels = size_t{332} * kHeight;

class StorePlans : public PoolTest {
 protected:
  using Call = std::function<uint32_t(void* dst, const void* src, uint32_t width)>;

  StorePlans() : random_(Seed()), src_(RandomBytes(6 * kPixels, random_)) { PrepareLUT(); }

  void Check(const std::string& name, const Call& call) {
    for (const uint32_t width : kWidths) {
      SCOPED_TRACE(testing::Message() << name << ", width " << width);
      simd::SetStores(simd::StoreKind::kCached);
      const std::vector<uint8_t> before = RandomBytes(6 * kPixels, random_);
      std::vector<uint8_t> expected = before;
      const uint32_t status = call(expected.data(), src_.data(), width);
      for (const size_t parts : {4u, 8u, 13u}) {
        simd::SetStores(simd::StorePlan::Streaming(parts, kPiecePixels));
        GuardedBuffer dst(before, Placement::Nth(place_++));
        EXPECT_EQ(call(dst.data(), src_.data(), width), status);
        EXPECT_TRUE(std::ranges::equal(dst.bytes(), expected)) << parts << " parts";
        EXPECT_TRUE(dst.CanariesIntact());
      }
    }
  }

  template <class Source>
  void CheckAll(const std::vector<Routine<Source>>& routines) {
    for (const Routine<Source>& routine : routines) {
      for (const uint8_t pad : kOffOn) {
        Check(routine.name, [&](void* dst, const void* src, uint32_t width) {
          return routine.call(dst, src, width, kHeight, 4, pad);
        });
      }
    }
  }

  template <class PlanesRoutine>
  void CheckPlanes(const std::vector<PlanesRoutine>& routines) {
    for (const PlanesRoutine& routine : routines) {
      for (const uint8_t pad : kOffOn) {
        Check(routine.name, [&](void* dst, const void* src, uint32_t width) {
          const size_t plane = (width + 3) / 4 * 4 * size_t{kHeight};
          auto* const planes = static_cast<uint8_t*>(dst);
          return routine.call(planes, planes + plane, planes + 2 * plane, src, width, kHeight, pad);
        });
      }
    }
  }

 private:
  const ScopedTarget restore_;
  Random random_;
  const std::vector<uint8_t> src_;
  size_t place_ = 0;
};

TEST_F(StorePlans, Pixels) {
  CheckAll(MonoRoutines());
  CheckAll(PackedRoutines());
  CheckAll(YuvRoutines());
}

TEST_F(StorePlans, Demosaic) {
  CheckAll(BilinearRoutines());
  CheckAll(AdaptiveRoutines());
}

TEST_F(StorePlans, Planes) {
  CheckPlanes(BayerPlanesRoutines());
  CheckPlanes(PackedPlanesRoutines());
}

TEST_F(StorePlans, ReducedSamples) {
  for (const uint32_t format : {PRISMO_MONO10, PRISMO_MONO12, PRISMO_MONO16}) {
    for (const uint8_t pad : kOffOn) {
      Check("MonoNToMono8", [&](void* dst, const void* src, uint32_t width) {
        return MonoNToMono8(dst, src, format, static_cast<int32_t>(width), kHeight, pad);
      });
    }
  }
}

TEST_F(StorePlans, Mirrors) {
  for (const uint32_t format :
       {PRISMO_MONO8, PRISMO_MONO12, PRISMO_RGB8, PRISMO_RGB12, PRISMO_YUV422, PRISMO_YUV411}) {
    for (const uint8_t horizontal : kOffOn) {
      for (const uint8_t vertical : kOffOn) {
        for (const auto mirror : {&RvrsImg_SP, &RvrsImg_MP}) {
          Check("mirror", [&](void* dst, const void* src, uint32_t width) {
            return mirror(dst, src, format, width, kHeight, horizontal, vertical);
          });
        }
      }
    }
  }
}

TEST_F(StorePlans, FramesFromPictures) {
  for (const uint32_t source : {PRISMO_BGR8, PRISMO_BGRA8}) {
    for (const uint32_t target : {PRISMO_MONO8, PRISMO_MONO10, PRISMO_RGB8, PRISMO_BGR12, PRISMO_YUV444,
                                  PRISMO_YUV422, PRISMO_YUV411}) {
      for (const uint8_t pad : kOffOn) {
        Check("ToRaw", [&](void* dst, const void* src, uint32_t width) {
          return ToRaw(dst, src, target, source, width, kHeight, pad);
        });
      }
    }
  }
  constexpr int32_t kRedGreenGreenBlue[] = {2, 1, 1, 0};
  for (const auto mosaic : {&ToBayer8to8, &ToBayer8to10, &ToBayer10to8, &ToBayer10to12}) {
    for (const uint8_t pad : kOffOn) {
      Check("ToBayer", [&](void* dst, const void* src, uint32_t width) {
        return mosaic(dst, src, kRedGreenGreenBlue, static_cast<int32_t>(width), kHeight, 3, pad);
      });
    }
  }
}

}  // namespace
}  // namespace prismo::test

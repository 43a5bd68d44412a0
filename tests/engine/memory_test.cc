// Memory that runs out in any call: every allocation that the library makes on the caller's thread fails
// once.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engine/failing_new.h"
#include "engine/fresh_pool.h"
#include "support/scoped_environment.h"
#include "support/temp_folder.h"

namespace prismo::mp {
namespace {

using test::Bytes;
using test::TempFolder;

class OutOfMemoryAnywhere : public FreshPool {
 protected:
  // Fails allocation after allocation of the call until it gets by without. `status` is what it has to say
  // then.
  static void Check(const char* name, uint32_t status, const std::function<uint32_t()>& call) {
    SCOPED_TRACE(name);
    int32_t which = 0;
    for (bool failed = true; failed; ++which) {
      ASSERT_LT(which, 1000);
      uint32_t answer;
      {
        const FailingNew memory(which);
        answer = call();
        failed = memory.Failed();
      }
      // A stream does without the memory for its buffer.
      EXPECT_TRUE(answer == UTL_STS_SUCCESS || (failed && answer == status)) << which << ": " << answer;
      EXPECT_EQ(call(), UTL_STS_SUCCESS) << "after allocation " << which << " had failed";
    }
    RecordProperty(name, which - 1);
  }

  static constexpr uint32_t kWidth = 32, kHeight = 32;

  const TempFolder folder_;
  const std::string path_ = folder_ / "file";
  const Bytes frame_ = Bytes(8 * kWidth * kHeight, 0x35);
  Bytes picture_ = Bytes(4 * kWidth * kHeight);
};

TEST_F(OutOfMemoryAnywhere, Conversions) {
  const std::vector<uint32_t> formats = {
      PRISMO_MONO8, PRISMO_MONO12, PRISMO_BAYER_RG8, PRISMO_BAYER_RG12, PRISMO_RGB8,
      PRISMO_RGB10, PRISMO_YUV411, PRISMO_YUV422,    PRISMO_YUV444,     PRISMO_BGR8_PADDED};
  constexpr uint32_t kToBgra = 0, kToBgr = 1;
  for (const bool pool : {false, true}) {
    for (const uint32_t format : formats) {
      for (const uint32_t type : {kToBgra, kToBgr}) {
        for (const uint32_t method : {0u, 1u}) {
          const std::string name = "ConvImageEx " + std::to_string(format) + " to " + std::to_string(type) +
                                   " by " + std::to_string(method) + (pool ? " on the pool" : "");
          Check(name.c_str(), UTL_STS_FAILURE, [&] {
            return ConvImageEx(type, format, picture_.data(), frame_.data(), kWidth, kHeight, method, pool);
          });
        }
      }
    }
  }
}

TEST_F(OutOfMemoryAnywhere, PlanesAndRectangles) {
  uint8_t* const planes = picture_.data();
  for (const bool pool : {false, true}) {
    for (const uint32_t format : {PRISMO_BAYER_GR8, PRISMO_RGB8}) {
      Check("ConvImagePlanarEx", UTL_STS_FAILURE, [&] {
        return ConvImagePlanarEx(format, planes, planes + kWidth * kHeight, planes + 2 * kWidth * kHeight,
                                 frame_.data(), kWidth, kHeight, pool, 1);
      });
    }
    for (const uint32_t kind : {0u, 2u}) {
      Check("ConvBayerRectEx_ACPI", UTL_STS_FAILURE, [&] {
        return ConvBayerRectEx_ACPI(kind, PRISMO_BAYER_GB8, picture_.data(), frame_.data(), kWidth, kHeight,
                                    3, 2, 16, 20, 16, 20, 0, 0, pool);
      });
    }
  }
}

TEST_F(OutOfMemoryAnywhere, Mirrors) {
  for (const auto mirror : {RvrsImg_SP, RvrsImg_MP, ReverseImg}) {
    Check("RvrsImg", UTL_STS_FAILURE,
          [&] { return mirror(picture_.data(), frame_.data(), PRISMO_MONO8, kWidth, kHeight, 1, 1); });
  }
}

TEST_F(OutOfMemoryAnywhere, Synthesis) {
  const int32_t channels[4] = {2, 1, 1, 0};
  Check("ToBayer8to12", UTL_STS_FAILURE,
        [&] { return ToBayer8to12(picture_.data(), frame_.data(), channels, kWidth, kHeight, 3, 0); });
  Check("ToRaw", UTL_STS_FAILURE,
        [&] { return ToRaw(picture_.data(), frame_.data(), PRISMO_MONO8, PRISMO_BGR8, kWidth, kHeight, 0); });
}

TEST_F(OutOfMemoryAnywhere, Files) {
  Check("SaveBmpARGB", UTL_STS_FILE_WRITE_ERROR,
        [&] { return SaveBmpARGB(frame_.data(), kWidth, kHeight, path_.c_str()); });
  Check("SaveBmpMono", UTL_STS_FILE_WRITE_ERROR,
        [&] { return SaveBmpMono(frame_.data(), kWidth, kHeight, path_.c_str()); });
  Check("SaveJpegQ", UTL_STS_FAILURE,
        [&] { return SaveJpegQ(frame_.data(), 0, 90, kWidth, kHeight, path_.c_str()); });
  for (const bool pool : {false, true}) {
    SetProcMode(pool);
    Check("SaveJpegRQ", UTL_STS_FAILURE,
          [&] { return SaveJpegRQ(frame_.data(), PRISMO_BAYER_RG8, 90, kWidth, kHeight, path_.c_str()); });
  }
  Check("SaveRWH", UTL_STS_FILE_WRITE_ERROR,
        [&] { return SaveRWH(frame_.data(), PRISMO_MONO8, kWidth, kHeight, path_.c_str()); });
  Check("LoadRWH", UTL_STS_FILE_READ_ERROR, [&] {
    uint8_t* loaded = nullptr;
    const uint32_t status = LoadRWH(path_.c_str(), &loaded, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(loaded != nullptr, status == UTL_STS_SUCCESS);
    FreeRWH(loaded);
    return status;
  });
}

// The configuration is read when the pool is made, and the log saved when it ends: without memory there are
// defaults, and no log. Nothing else.
TEST_F(OutOfMemoryAnywhere, ConfigurationAndLog) {
  const std::string log = folder_ / "log.pxu";
  test::WriteText(log, std::string(48, '\0'));
  Check("ConvLogPXU", UTL_STS_FILE_READ_ERROR, [&] {
    TerminateMPThreads();
    return ConvLogPXU(log.c_str(), path_.c_str(), 0);
  });
  const test::ScopedEnvironment data("XDG_DATA_HOME", folder_ / "data");
  Check("TerminateMPThreads", UTL_STS_FAILURE, [] {
    const uint32_t status = StartMPThreads(1);
    TerminateMPThreads();
    return status;
  });
}

}  // namespace
}  // namespace prismo::mp

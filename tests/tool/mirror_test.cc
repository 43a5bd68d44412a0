#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

using MirrorTest = ToolTest;

struct Flags {
  const char* options;
  bool horizontal, vertical;
};
constexpr Flags kFlags[] = {
    {"--horizontal", true, false}, {"--vertical", false, true}, {"--horizontal --vertical", true, true}};

TEST_F(MirrorTest, EveryFormatAsTheLibraryMirrorsIt) {
  for (const NamedFormat& format : AllFormats()) {
    SCOPED_TRACE(format.name);
    const Bytes frame = MakeFrame("f", format.code, 40, 32);
    const bool has_mirror = format.code != PRISMO_BGRA8 && format.code != PRISMO_BGRA10 &&
                            format.code != PRISMO_BGR8_PADDED && format.code != PRISMO_MONO8_PADDED;
    for (const auto& [options, horizontal, vertical] : kFlags) {
      if (!has_mirror) {
        ExpectFailure(std::string("mirror f.rwh -o x.raw ") + options, {"no mirror", format.name});
        continue;
      }
      Bytes expected(frame.size());
      ASSERT_EQ(RvrsImg_SP(expected.data(), frame.data(), format.code, 40, 32, horizontal, vertical),
                UTL_STS_SUCCESS);
      for (const char* threads : {" --threads caller", " --threads 2"}) {
        RunWell(std::string("mirror f.rwh -o m.raw ") + options + threads);
        EXPECT_EQ(Content("m.raw"), expected) << options << threads;
      }
    }
  }
}

// Holds only if the mirrored frame is labelled with its new phase.
TEST_F(MirrorTest, DemosaicOfTheMirroredFrameIsTheMirroredPicture) {
  for (const uint32_t code : {PRISMO_BAYER_GR8, PRISMO_BAYER_RG8, PRISMO_BAYER_GB12, PRISMO_BAYER_BG10}) {
    MakeFrame("f", code, 16, 10);
    RunWell("convert f.rwh -o f.bgr");
    const Bytes picture = Content("f.bgr");
    for (const auto& [options, horizontal, vertical] : kFlags) {
      RunWell(std::string("mirror f.rwh -o m.rwh ") + options);
      RunWell("convert m.rwh -o m.bgr");
      const Bytes mirrored = Content("m.bgr");
      for (size_t y = 0; y < 10; ++y) {
        for (size_t x = 0; x < 16; ++x) {
          const size_t from = (vertical ? 9 - y : y) * 16 + (horizontal ? 15 - x : x);
          for (size_t c = 0; c < 3; ++c) {
            ASSERT_EQ(mirrored[(y * 16 + x) * 3 + c], picture[from * 3 + c])
                << std::hex << code << " " << options << " at " << std::dec << x << "," << y;
          }
        }
      }
    }
  }
}

TEST_F(MirrorTest, WhatItCannotDo) {
  MakeFrame("f", PRISMO_YUV422, 5, 4);
  ExpectFailure("mirror f.rwh -o x.rwh --horizontal", {"YUV422", "multiple of 2"});
  ExpectFailure("mirror f.rwh -o x.rwh", {"--horizontal, --vertical or both"});
  ExpectFailure("mirror f.rwh -o x.bmp --vertical", {"x.bmp", ".rwh or .raw"});
}

}  // namespace
}  // namespace prismo::test

#include <array>
#include <cstring>

#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

class MosaicTest : public ToolTest {
 protected:
  // photo.png and photo.bmp of random pixels; returns B, G, R bytes.
  Bytes MakePhoto(uint32_t width, uint32_t height) {
    const Bytes pixels = MakeFrame("photo", PRISMO_BGR8, width, height);
    RunWell("convert photo.rwh -o photo.png");
    RunWell("convert photo.rwh -o photo.bmp");
    return pixels;
  }
};

constexpr uint32_t kWidth = 20, kHeight = 6;

// The sample of a colour site, scaled to the depth, by its own arithmetic.
Bytes ExpectedBayer(const Bytes& photo, const std::string& name) {
  const std::string phase = name.substr(5, 2);
  const unsigned depth = static_cast<unsigned>(std::stoul(name.substr(7)));
  // The second row of a tile holds green where the first does not, and the colour that the first lacks.
  const char missing = phase.find('R') == std::string::npos ? 'R' : 'B';
  const std::string second = phase[0] == 'G' ? std::string{missing, 'G'} : std::string{'G', missing};
  Bytes frame;
  for (size_t y = 0; y < kHeight; ++y) {
    for (size_t x = 0; x < kWidth; ++x) {
      const char colour = (y % 2 ? second : phase)[x % 2];
      const size_t index = colour == 'B' ? 0 : colour == 'G' ? 1 : 2;
      const unsigned sample = photo[(y * kWidth + x) * 3 + index] << (depth - 8);
      frame.push_back(static_cast<uint8_t>(sample));
      if (depth > 8) frame.push_back(static_cast<uint8_t>(sample >> 8));
    }
  }
  return frame;
}

TEST_F(MosaicTest, EveryFormat) {
  const Bytes photo = MakePhoto(kWidth, kHeight);
  for (const NamedFormat& format : AllFormats()) {
    SCOPED_TRACE(format.name);
    const std::string command = "mosaic photo.png --format " + format.name;
    if (format.code == PRISMO_BGRA10) {
      ExpectFailure(command + " -o x.rwh", {"BGRA10"});
      continue;
    }
    RunWell(command + " -o m.raw");
    Bytes expected(BytesOfRow(format.code, kWidth) * kHeight);
    if (IsPixelBayer(format.code)) {
      expected = ExpectedBayer(photo, format.name);
    } else if (format.code == PRISMO_BGRA8) {
      for (size_t i = 0; i < size_t{kWidth} * kHeight; ++i) {
        std::memcpy(&expected[4 * i], &photo[3 * i], 3);
        expected[4 * i + 3] = 255;
      }
    } else if (format.code == PRISMO_BGR8_PADDED) {
      expected = photo;  // this width needs no padding
    } else {
      const uint32_t code = format.code == PRISMO_MONO8_PADDED ? PRISMO_MONO8 : format.code;
      ASSERT_EQ(ToRaw(expected.data(), photo.data(), code, PRISMO_BGR8, kWidth, kHeight, 0), UTL_STS_SUCCESS);
    }
    EXPECT_EQ(Content("m.raw"), expected);
  }
}

TEST_F(MosaicTest, PaddedRows) {
  const Bytes photo = MakePhoto(5, 3);
  RunWell("mosaic photo.bmp --format BGR8Pad -o m.raw");
  Bytes expected;
  for (size_t y = 0; y < 3; ++y) {
    expected.insert(expected.end(), &photo[15 * y], &photo[15 * y] + 15);
    expected.push_back(0);
  }
  EXPECT_EQ(Content("m.raw"), expected);
  RunWell("mosaic photo.bmp --format Mono8 -o mono.raw");
  RunWell("mosaic photo.bmp --format Mono8Pad -o m.raw");
  const Bytes mono = Content("mono.raw"), padded = Content("m.raw");
  ASSERT_EQ(padded.size(), 24u);
  for (size_t y = 0; y < 3; ++y) EXPECT_EQ(std::memcmp(&padded[8 * y], &mono[5 * y], 5), 0);
}

TEST_F(MosaicTest, PhotosAreCroppedToWhatTheFormatHolds) {
  const Bytes photo = MakePhoto(7, 5);
  const std::string line = RunWell("mosaic photo.png --format BayerRG8 -o m.rwh");
  EXPECT_NE(line.find("6x4, cropped from 7x5"), std::string::npos) << line;
  const Bytes frame = Content("m.rwh");
  ASSERT_EQ(frame.size(), 16u + 24);
  EXPECT_EQ(frame[16], photo[2]) << "red of the first pixel";
  EXPECT_EQ(frame[16 + 6 * 3 + 5], photo[(7 * 3 + 5) * 3]) << "blue of the last pixel that is kept";
  RunWell("mosaic photo.png --format YUV411 -o m.rwh");
  EXPECT_EQ(Content("m.rwh").size(), 16u + 6 * 5);
}

TEST_F(MosaicTest, GreyPhotos) {
  MakeFrame("g", PRISMO_MONO8, 8, 4);
  RunWell("convert g.rwh -o g.png");
  RunWell("convert g.rwh -o g.bmp");
  for (const char* photo : {"g.png", "g.bmp"}) {
    RunWell(std::string("mosaic ") + photo + " --format BayerGB8 -o m.raw");
    const Bytes frame = Content("g.rwh");
    EXPECT_EQ(Content("m.raw"), Bytes(frame.begin() + 16, frame.end())) << photo;
  }
}

TEST_F(MosaicTest, PhotosThatCannotBeRead) {
  MakePhoto(1, 1);
  ExpectFailure("mosaic photo.png --format BayerRG8 -o x.rwh", {"1x1", "too small", "BayerRG8"});
  ExpectFailure("mosaic photo.png --format RGB8 -o x.bmp", {"x.bmp", ".rwh or .raw"});
  ExpectFailure("mosaic none.png --format RGB8 -o x.rwh", {"none.png", "no such file"});
  ExpectFailure("mosaic photo.rwh --format RGB8 -o x.rwh", {"photo.rwh", "neither a BMP nor a PNG"});
}

// Whatever is cut off or overwritten, the answer is one line.
TEST_F(MosaicTest, DamagedPhotos) {
  PRISMO_TRACE_SEED();
  MakePhoto(9, 7);
  for (const std::string name : {"photo.png", "photo.bmp"}) {
    const Bytes whole = Content(name);
    for (const size_t length : {size_t{0}, size_t{1}, size_t{4}, size_t{20}, size_t{30}, size_t{54},
                                whole.size() / 2, whole.size() - 1}) {
      if (name == "photo.png" && length == whole.size() - 1) continue;  // only its last checksum byte is gone
      WriteFile(Path("bad"), Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
      ExpectFailure("mosaic bad --format RGB8 -o x.rwh", {"bad"});
    }
    Random random(Seed());
    for (int i = 0; i < 40; ++i) {
      Bytes damaged = whole;
      for (int j = 0; j < 3; ++j) damaged[random.Below(60)] = random.Byte();
      WriteFile(Path("bad"), damaged);
      const Outcome outcome = Run("mosaic bad --format RGB8 -o y.rwh");
      const bool refused = outcome.exit_code == 1 && outcome.err.starts_with("prismo: bad");
      const bool read = outcome.exit_code == 0 && outcome.err.empty();
      EXPECT_TRUE(refused || read) << name << " " << i << " exit code " << outcome.exit_code << '\n'
                                   << outcome.err;
    }
  }
}

TEST_F(MosaicTest, HugePicturesInSmallFiles) {
  Bytes bmp = (MakePhoto(2, 2), Content("photo.bmp"));
  bmp[20] = 0x7F;  // a width of about 8 million
  WriteFile(Path("bad"), bmp);
  ExpectFailure("mosaic bad --format RGB8 -o x.rwh", {"8323074x2", "bytes"});
  bmp[24] = 0x7F;
  WriteFile(Path("bad"), bmp);
  ExpectFailure("mosaic bad --format RGB8 -o x.rwh", {"too large"});
}

}  // namespace
}  // namespace prismo::test

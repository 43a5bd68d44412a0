// JPEG files, read back by a decoder, and the statuses of their writers.
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

#include "PrismoUtl.h"
#include "support/pool.h"
#include "support/temp_folder.h"

#if defined(__unix__)
#include <sys/resource.h>
#endif

namespace prismo::test {
namespace {

constexpr uint32_t kBgrLayout = 1;
constexpr uint32_t kBgraLayout = 0;

// A picture of slow waves, different in each channel.
Bytes SmoothPicture(uint32_t pixel_bytes, uint32_t width, uint32_t height) {
  Bytes image(size_t{width} * height * pixel_bytes, 0x5A);  // what is written to alpha shows nowhere
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      uint8_t* pixel = &image[(size_t{y} * width + x) * pixel_bytes];
      pixel[0] = static_cast<uint8_t>(128 + 100 * std::sin(x * 0.02 + y * 0.01));
      pixel[1] = static_cast<uint8_t>(128 + 80 * std::sin(x * 0.01 - y * 0.02));
      pixel[2] = static_cast<uint8_t>(128 + 60 * std::cos(x * 0.015 + y * 0.015));
    }
  }
  return image;
}

struct Decoded {
  int width = 0, height = 0, subsampling = -1;
  Bytes bgr;
};

Decoded Decode(const Bytes& jpeg) {
  struct Destroy {
    void operator()(void* handle) const { tjDestroy(handle); }
  };
  const std::unique_ptr<void, Destroy> decoder(tjInitDecompress());
  Decoded decoded;
  int colourspace = 0;
  if (tjDecompressHeader3(decoder.get(), jpeg.data(), jpeg.size(), &decoded.width, &decoded.height,
                          &decoded.subsampling, &colourspace) != 0) {
    ADD_FAILURE() << tjGetErrorStr2(decoder.get());
    return decoded;
  }
  decoded.bgr.resize(size_t{3} * static_cast<size_t>(decoded.width) * static_cast<size_t>(decoded.height));
  if (tjDecompress2(decoder.get(), jpeg.data(), jpeg.size(), decoded.bgr.data(), decoded.width, 0,
                    decoded.height, TJPF_BGR, TJFLAG_ACCURATEDCT) != 0) {
    ADD_FAILURE() << tjGetErrorStr2(decoder.get());
  }
  return decoded;
}

double PeakSignalToNoise(const Decoded& decoded, const Bytes& image, uint32_t pixel_bytes) {
  double squares = 0;
  for (size_t i = 0; i < decoded.bgr.size(); ++i) {
    const double difference = static_cast<double>(decoded.bgr[i]) - image.at(i / 3 * pixel_bytes + i % 3);
    squares += difference * difference;
  }
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(decoded.bgr.size()) / squares);
}

// The smallest quantisers of luma and chroma tell the quality that a file was written with.
uint8_t FirstQuantiser(const Bytes& jpeg) {
  const uint8_t marker[] = {0xFF, 0xDB};
  const auto table = std::search(jpeg.begin(), jpeg.end(), std::begin(marker), std::end(marker));
  return table == jpeg.end() ? 0 : table[5];
}

class Jpeg : public testing::Test {
 protected:
  TempFolder folder_;
  const std::string path_ = folder_ / "picture.jpg";
};

TEST_F(Jpeg, PicturesComeBack) {
  for (const auto& [width, height] : {std::pair{320, 200}, {5, 3}, {1, 1}, {17, 33}, {321, 1}}) {
    const auto w = static_cast<uint32_t>(width), h = static_cast<uint32_t>(height);
    for (uint32_t layout : {1u, 0u, 2u, 0xFFFFFFFFu}) {
      SCOPED_TRACE(testing::Message() << width << " x " << height << ", layout " << layout);
      const uint32_t pixel_bytes = layout == kBgrLayout ? 3 : 4;
      const Bytes image = SmoothPicture(pixel_bytes, w, h);

      ASSERT_EQ(SaveJpegQ(image.data(), layout, 95, w, h, path_.c_str()), UTL_STS_SUCCESS);
      const Decoded fine = Decode(ReadFile(path_));
      EXPECT_EQ(fine.width, width);
      EXPECT_EQ(fine.height, height);
      EXPECT_GE(PeakSignalToNoise(fine, image, pixel_bytes), 40);

      ASSERT_EQ(SaveJpeg(image.data(), layout, w, h, path_.c_str()), UTL_STS_SUCCESS);
      const Decoded usual = Decode(ReadFile(path_));
      EXPECT_EQ(usual.width, width);
      EXPECT_EQ(usual.height, height);
      EXPECT_GE(PeakSignalToNoise(usual, image, pixel_bytes), 30);
    }
  }
}

TEST_F(Jpeg, DefaultIsQuality75WithHalvedChroma) {
  const Bytes image = SmoothPicture(4, 64, 64);
  ASSERT_EQ(SaveJpeg(image.data(), kBgraLayout, 64, 64, path_.c_str()), UTL_STS_SUCCESS);
  const Bytes by_default = ReadFile(path_);
  ASSERT_EQ(SaveJpegQ(image.data(), kBgraLayout, 75, 64, 64, path_.c_str()), UTL_STS_SUCCESS);
  EXPECT_EQ(by_default, ReadFile(path_));
  EXPECT_EQ(Decode(by_default).subsampling, TJSAMP_420);
  EXPECT_EQ(FirstQuantiser(by_default), 8);  // the standard table's 16, halved at 75
}

TEST_F(Jpeg, BothLayoutsGiveTheSamePicture) {
  const Bytes bgra = SmoothPicture(4, 37, 21), bgr = SmoothPicture(3, 37, 21);
  ASSERT_EQ(SaveJpeg(bgra.data(), kBgraLayout, 37, 21, path_.c_str()), UTL_STS_SUCCESS);
  const Bytes from_bgra = ReadFile(path_);
  ASSERT_EQ(SaveJpeg(bgr.data(), kBgrLayout, 37, 21, path_.c_str()), UTL_STS_SUCCESS);
  EXPECT_EQ(from_bgra, ReadFile(path_));
}

TEST_F(Jpeg, SizeGrowsWithQuality) {
  const Bytes image = SmoothPicture(4, 320, 200);
  size_t last = 0;
  for (uint32_t quality : {0u, 10u, 30u, 50u, 75u, 90u, 95u, 100u}) {
    ASSERT_EQ(SaveJpegQ(image.data(), kBgraLayout, quality, 320, 200, path_.c_str()), UTL_STS_SUCCESS);
    const size_t size = ReadFile(path_).size();
    EXPECT_GT(size, last) << quality;
    last = size;
  }
}

TEST_F(Jpeg, QualityAbove100IsRefused) {
  const Bytes image = SmoothPicture(4, 8, 8);
  for (uint32_t quality : {101u, 1000u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(SaveJpegQ(image.data(), kBgraLayout, quality, 8, 8, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  }
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(Jpeg, NullPointersAndEmptyFramesCreateNothing) {
  const Bytes image(64);
  const char* path = path_.c_str();
  for (uint32_t layout : {kBgrLayout, kBgraLayout}) {
    EXPECT_EQ(SaveJpeg(nullptr, layout, 2, 2, path), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(SaveJpeg(image.data(), layout, 2, 2, nullptr), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(SaveJpeg(image.data(), layout, 0, 2, path), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(SaveJpeg(image.data(), layout, 2, 0, path), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(SaveJpeg(image.data(), layout, 65536, 65536, path), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(SaveJpegQ(nullptr, layout, 50, 2, 2, path), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(SaveJpegQ(image.data(), layout, 50, 2, 2, nullptr), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(SaveJpegQ(image.data(), layout, 50, 0, 2, path), UTL_STS_INVALID_PARAMETER);
  }
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(Jpeg, MissingFolder) {
  const Bytes image = SmoothPicture(4, 8, 8);
  const std::string file = folder_ / "file";
  WriteFile(file, {1});
  for (const std::string& path : {folder_ / "missing/picture.jpg", file + "/picture.jpg", std::string()}) {
    EXPECT_EQ(SaveJpeg(image.data(), kBgraLayout, 8, 8, path.c_str()), UTL_STS_FILE_NOT_FOUND) << path;
  }
}

TEST_F(Jpeg, PathThatIsAFolder) {
  const Bytes image = SmoothPicture(4, 8, 8);
  EXPECT_EQ(SaveJpeg(image.data(), kBgraLayout, 8, 8, (folder_ / "").c_str()), UTL_STS_FAILURE);
  EXPECT_TRUE(std::filesystem::is_directory(folder_ / ""));
}

TEST_F(Jpeg, LongerFileIsReplaced) {
  const Bytes image = SmoothPicture(4, 8, 8);
  ASSERT_EQ(SaveJpeg(image.data(), kBgraLayout, 8, 8, path_.c_str()), UTL_STS_SUCCESS);
  const Bytes expected = ReadFile(path_);
  WriteFile(path_, Bytes(expected.size() + 1000, 0xEE));
  ASSERT_EQ(SaveJpeg(image.data(), kBgraLayout, 8, 8, path_.c_str()), UTL_STS_SUCCESS);
  EXPECT_EQ(ReadFile(path_), expected);
}

// The format holds 16 bits of width and height.
TEST_F(Jpeg, PicturesThatAreTooLarge) {
  const Bytes image(size_t{4} * 70000);
  for (uint32_t layout : {kBgrLayout, kBgraLayout}) {
    EXPECT_EQ(SaveJpeg(image.data(), layout, 70000, 1, path_.c_str()), UTL_STS_FAILURE);
    EXPECT_EQ(SaveJpeg(image.data(), layout, 1, 70000, path_.c_str()), UTL_STS_FAILURE);
    EXPECT_EQ(SaveJpeg(image.data(), layout, 65536, 1, path_.c_str()), UTL_STS_FAILURE);
    EXPECT_EQ(SaveJpegQ(image.data(), layout, 50, 0xFFFFFFFF, 1, path_.c_str()), UTL_STS_FAILURE);
    EXPECT_EQ(SaveJpegQ(image.data(), layout, 50, 0xFFFFFFFF, 0xFFFFFFFF, path_.c_str()), UTL_STS_FAILURE);
  }
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(Jpeg, WidestPictureOfTheEncoder) {
  const Bytes image = SmoothPicture(3, 65500, 2);
  ASSERT_EQ(SaveJpeg(image.data(), kBgrLayout, 65500, 2, path_.c_str()), UTL_STS_SUCCESS);
  EXPECT_EQ(Decode(ReadFile(path_)).width, 65500);
}

TEST_F(Jpeg, AFullDeviceFailsAndStays) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full here";
  const Bytes image = SmoothPicture(4, 64, 64);
  EXPECT_EQ(SaveJpeg(image.data(), kBgraLayout, 64, 64, "/dev/full"), UTL_STS_FAILURE);
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
  const std::string link = folder_ / "full";
  std::filesystem::create_symlink("/dev/full", link);
  EXPECT_EQ(SaveJpeg(image.data(), kBgraLayout, 64, 64, link.c_str()), UTL_STS_FAILURE);
  EXPECT_TRUE(std::filesystem::exists(link));
}

#if defined(__unix__)
TEST_F(Jpeg, AFileThatCannotBeWrittenWholeIsRemoved) {
  const Bytes image = SmoothPicture(4, 320, 200);
  const std::string link = folder_ / "link.jpg";
  std::filesystem::create_symlink(path_, link);
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit limit = {500, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  for (const std::string& path : {path_, link}) {
    EXPECT_EQ(SaveJpeg(image.data(), kBgraLayout, 320, 200, path.c_str()), UTL_STS_FAILURE);
    EXPECT_FALSE(std::filesystem::exists(path_));
  }
  setrlimit(RLIMIT_FSIZE, &before);
}
#endif

// Frames of cameras. The converter that each format has to go through is named here once more.
struct Route {
  uint32_t format;
  PrismoConverter converter;
  PrismoConverter adaptive = nullptr;
};

const Route kRoutes[] = {
    {PRISMO_MONO8, ConvMono8ToBGRA},
    {PRISMO_MONO10, ConvMono10ToBGRA},
    {PRISMO_MONO12, ConvMono12ToBGRA},
    {PRISMO_MONO16, ConvMono16ToBGRA},
    {PRISMO_BAYER_GR8, ConvByrGR8ToBGRA, ConvByrGR8ToBGRAACPI},
    {PRISMO_BAYER_RG8, ConvByrRG8ToBGRA, ConvByrRG8ToBGRAACPI},
    {PRISMO_BAYER_GB8, ConvByrGB8ToBGRA, ConvByrGB8ToBGRAACPI},
    {PRISMO_BAYER_BG8, ConvByrBG8ToBGRA, ConvByrBG8ToBGRAACPI},
    {PRISMO_BAYER_GR10, ConvByrGR10ToBGRA},
    {PRISMO_BAYER_RG10, ConvByrRG10ToBGRA},
    {PRISMO_BAYER_GB10, ConvByrGB10ToBGRA},
    {PRISMO_BAYER_BG10, ConvByrBG10ToBGRA},
    {PRISMO_BAYER_GR12, ConvByrGR12ToBGRA},
    {PRISMO_BAYER_RG12, ConvByrRG12ToBGRA},
    {PRISMO_BAYER_GB12, ConvByrGB12ToBGRA},
    {PRISMO_BAYER_BG12, ConvByrBG12ToBGRA},
    {PRISMO_RGB8, ConvRGB8PToBGRA},
    {PRISMO_BGR8, ConvBGR8PToBGRA},
    {PRISMO_RGB10, ConvRGB10PToBGRA},
    {PRISMO_BGR10, ConvBGR10PToBGRA},
    {PRISMO_RGB12, ConvRGB12PToBGRA},
    {PRISMO_BGR12, ConvBGR12PToBGRA},
    {PRISMO_YUV411, ConvYUV411PToBGRA},
    {PRISMO_YUV422, ConvYUV422PToBGRA},
    {PRISMO_YUV444, ConvYUV444PToBGRA},
};

uint32_t Padded(void* dst, const void* src, uint32_t format, uint32_t width, uint32_t height) {
  const bool pool = GetProcMode() != 0;
  return ToBGRA(dst, src, format, width, height, static_cast<uint32_t>(GetBayerConvMode()), pool, 0);
}

// Enough for any format, whatever its padding.
Bytes RandomFrame(uint32_t width, uint32_t height) {
  std::mt19937 random(width * 1000 + height);
  Bytes frame(size_t{width + 4} * height * 8);
  for (size_t i = 0; i < frame.size(); i += 2) {
    frame[i] = static_cast<uint8_t>(random());
    frame[i + 1] = static_cast<uint8_t>(random() % 4);  // the high byte of a word of 10 bits
  }
  return frame;
}

class JpegOfFrames : public PoolTest {
 protected:
  // Compares with what SaveJpeg makes of the picture that `convert` gives.
  template <class Convert>
  void ExpectSameFiles(const Bytes& frame, uint32_t format, uint32_t width, uint32_t height,
                       Convert&& convert) {
    Bytes bgra(size_t{4} * width * height);
    ASSERT_EQ(convert(bgra.data(), frame.data()), UTL_STS_SUCCESS);

    ASSERT_EQ(SaveJpeg(bgra.data(), kBgraLayout, width, height, path_.c_str()), UTL_STS_SUCCESS);
    const Bytes by_default = ReadFile(path_);
    ASSERT_EQ(SaveJpegRaw(frame.data(), format, width, height, path_.c_str()), UTL_STS_SUCCESS);
    EXPECT_TRUE(ReadFile(path_) == by_default);

    ASSERT_EQ(SaveJpegQ(bgra.data(), kBgraLayout, 33, width, height, path_.c_str()), UTL_STS_SUCCESS);
    const Bytes small = ReadFile(path_);
    EXPECT_FALSE(small == by_default);
    ASSERT_EQ(SaveJpegRQ(frame.data(), format, 33, width, height, path_.c_str()), UTL_STS_SUCCESS);
    EXPECT_TRUE(ReadFile(path_) == small);
  }

  TempFolder folder_;
  const std::string path_ = folder_ / "frame.jpg";
};

TEST_F(JpegOfFrames, GoThroughTheConverterOfTheirFormat) {
  const Bytes frame = RandomFrame(64, 128);
  for (int32_t mode : {0, 1, 2}) {
    for (int32_t bayer_mode : {0, 1}) {
      SetProcMode(mode);
      SetBayerConvMode(bayer_mode);
      for (const Route& route : kRoutes) {
        SCOPED_TRACE(testing::Message()
                     << std::hex << route.format << ", mode " << mode << ", " << bayer_mode);
        ExpectSameFiles(frame, route.format, 64, 128, [&](void* dst, const void* src) {
          const bool adaptive = bayer_mode == 1 && route.adaptive != nullptr;
          return (adaptive ? route.adaptive : route.converter)(dst, src, 64, 128);
        });
      }
    }
  }
}

TEST_F(JpegOfFrames, PaddedFormatsGoThroughToBGRA) {
  for (uint32_t width : {61u, 62u, 64u}) {
    const Bytes frame = RandomFrame(width, 33);
    for (uint32_t format : {PRISMO_BGR8_PADDED, PRISMO_MONO8_PADDED}) {
      SCOPED_TRACE(testing::Message() << std::hex << format << ", width " << std::dec << width);
      ExpectSameFiles(frame, format, width, 33,
                      [&](void* dst, const void* src) { return Padded(dst, src, format, width, 33); });
    }
  }
}

TEST_F(JpegOfFrames, BGRA8IsEncodedAsItIs) {
  const Bytes frame = RandomFrame(61, 33);
  ExpectSameFiles(frame, PRISMO_BGRA8, 61, 33, [](void* dst, const void* src) {
    std::copy_n(static_cast<const uint8_t*>(src), 4 * 61 * 33, static_cast<uint8_t*>(dst));
    return UTL_STS_SUCCESS;
  });
  EXPECT_EQ(SaveJpegRaw(nullptr, PRISMO_BGRA8, 2, 2, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRaw(frame.data(), PRISMO_BGRA8, 2, 0, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRQ(frame.data(), PRISMO_BGRA8, 101, 2, 2, path_.c_str()), UTL_STS_INVALID_PARAMETER);
}

// What a conversion leaves out is black, not a piece of the frame before.
TEST_F(JpegOfFrames, PixelsThatAreLeftOutAreBlack) {
  struct Odd {
    uint32_t format, width, height;
    PrismoConverter converter;
  };
  SetMPCount(2);
  for (const Odd& odd :
       {Odd{PRISMO_RGB8, 16, 1001, ConvRGB8PToBGRA}, Odd{PRISMO_YUV411, 17, 64, ConvYUV411PToBGRA},
        Odd{PRISMO_YUV422, 17, 64, ConvYUV422PToBGRA}}) {
    SCOPED_TRACE(testing::Message() << std::hex << odd.format);
    const Bytes white(size_t{4} * odd.width * odd.height, 0xFF);
    ASSERT_EQ(SaveJpegRaw(white.data(), PRISMO_MONO8, odd.width, odd.height, path_.c_str()), UTL_STS_SUCCESS);
    ExpectSameFiles(white, odd.format, odd.width, odd.height, [&](void* dst, const void* src) {
      return odd.converter(dst, src, odd.width, odd.height);
    });
  }
}

TEST_F(JpegOfFrames, ConversionStatusComesBackAndNoFileIsWritten) {
  const Bytes frame = RandomFrame(8, 8);
  for (uint32_t format : {0x12345678u, PRISMO_BGRA10, 0u}) {
    EXPECT_EQ(SaveJpegRaw(frame.data(), format, 8, 8, path_.c_str()), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(SaveJpegRQ(frame.data(), format, 50, 8, 8, path_.c_str()), UTL_STS_INVALID_PARAMETER);
    // Sizes that nobody could convert do no harm.
    EXPECT_EQ(SaveJpegRaw(frame.data(), format, 65535, 65535, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  }
  EXPECT_FALSE(std::filesystem::exists(path_));
  WriteFile(path_, {1, 2, 3});
  EXPECT_EQ(SaveJpegRaw(frame.data(), 0x12345678, 8, 8, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(ReadFile(path_), (Bytes{1, 2, 3}));
}

TEST_F(JpegOfFrames, NullPointersAndEmptyFramesCreateNothing) {
  const Bytes frame(64);
  const char* path = path_.c_str();
  EXPECT_EQ(SaveJpegRaw(nullptr, PRISMO_MONO8, 2, 2, path), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRaw(frame.data(), PRISMO_MONO8, 2, 2, nullptr), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRaw(frame.data(), PRISMO_MONO8, 0, 2, path), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRaw(frame.data(), PRISMO_MONO8, 65536, 65536, path), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRQ(nullptr, PRISMO_MONO8, 50, 2, 2, path), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRQ(frame.data(), PRISMO_MONO8, 50, 2, 2, nullptr), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRQ(frame.data(), PRISMO_MONO8, 50, 2, 0, path), UTL_STS_INVALID_PARAMETER);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(JpegOfFrames, EncoderStatuses) {
  const Bytes frame(70000);
  const std::string missing = folder_ / "missing/frame.jpg";
  EXPECT_EQ(SaveJpegRaw(frame.data(), PRISMO_MONO8, 8, 8, missing.c_str()), UTL_STS_FILE_NOT_FOUND);
  EXPECT_EQ(SaveJpegRQ(frame.data(), PRISMO_MONO8, 101, 8, 8, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveJpegRaw(frame.data(), PRISMO_MONO8, 70000, 1, path_.c_str()), UTL_STS_FAILURE);
  EXPECT_EQ(SaveJpegRaw(frame.data(), PRISMO_MONO8, 0x80000001, 1, path_.c_str()), UTL_STS_FAILURE);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

// Workers go on writing to the pictures of calls that timed out. They must not reach a later call's picture.
TEST_F(JpegOfFrames, TimedOutConversions) {
  // The slowest conversion there is, of a large frame.
  constexpr uint32_t kSide = 3000;
  const Bytes white(size_t{kSide} * kSide, 0xFF), black(size_t{kSide} * kSide);
  SetBayerConvMode(1);
  const auto save = [&](const Bytes& frame, int32_t mode, const std::string& path) {
    SetProcMode(mode);
    const uint32_t format = mode == 1 ? PRISMO_BAYER_RG8 : PRISMO_MONO8;
    return SaveJpegRaw(frame.data(), format, kSide, kSide, path.c_str());
  };
  ASSERT_EQ(save(black, 0, path_), UTL_STS_SUCCESS);
  const Bytes expected = ReadFile(path_);

  const std::string given_up = folder_ / "given-up.jpg";
  SetMPTimeout_msec(0);
  int timeouts = 0;
  for (int i = 0; i < 100 && timeouts < 3; ++i) {
    std::filesystem::remove(given_up);
    const uint32_t status = save(white, 1, given_up);
    EXPECT_EQ(std::filesystem::exists(given_up), status == UTL_STS_SUCCESS);
    // A worker that got the processor before the caller was back may have finished in time.
    if (status == UTL_STS_SUCCESS) continue;
    EXPECT_EQ(status, UTL_STS_TIMEOUT);
    ++timeouts;
    EXPECT_EQ(save(black, 0, path_), UTL_STS_SUCCESS);
    EXPECT_TRUE(ReadFile(path_) == expected);
  }
  EXPECT_EQ(timeouts, 3);
  TerminateMPThreads();  // the workers read the frame until then
}

}  // namespace
}  // namespace prismo::test

// BMP files, byte by byte, and the statuses of their writers.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <thread>

#include "PrismoUtl.h"
#include "support/temp_folder.h"

namespace prismo::test {
namespace {

constexpr uint32_t kExtraStride = 5;

using Writer = std::function<uint32_t(const void*, uint32_t width, uint32_t height, const char* path)>;

template <auto kFunction>
Writer Strided(uint32_t pixel_bytes) {
  return [pixel_bytes](const void* image, uint32_t width, uint32_t height, const char* path) {
    return kFunction(image, width, height, pixel_bytes * width + kExtraStride, path);
  };
}

struct Form {
  const char* name;
  Writer save;
  uint32_t pixel_bytes;
  uint32_t (*pitch)(uint32_t width);
  uint32_t (*copied)(uint32_t width);
  uint32_t (*zeros)(uint32_t width);
};

std::ostream& operator<<(std::ostream& out, const Form& form) { return out << form.name; }

uint32_t None(uint32_t) { return 0; }
template <uint32_t kBytes>
uint32_t Packed(uint32_t width) {
  return kBytes * width;
}
template <uint32_t kBytes>
uint32_t Padded(uint32_t width) {
  return (kBytes * width + 3) & ~3u;
}
template <uint32_t kBytes>
uint32_t WithExtra(uint32_t width) {
  return kBytes * width + kExtraStride;
}
uint32_t MinusWidth(uint32_t width) { return (4 - width % 4) % 4; }
uint32_t PlusWidth(uint32_t width) { return width % 4; }

const Form kForms[] = {
    {"SaveBmpARGB", SaveBmpARGB, 4, Packed<4>, Packed<4>, None},
    {"SaveBmpRGB", SaveBmpRGB, 3, Packed<3>, Packed<3>, MinusWidth},
    {"SaveBmpRGBPad", SaveBmpRGBPad, 3, Padded<3>, Padded<3>, None},
    {"SaveBmpMono", SaveBmpMono, 1, Packed<1>, Packed<1>, MinusWidth},
    {"SaveBmpMonoPad", SaveBmpMonoPad, 1, Padded<1>, Padded<1>, None},
    {"SaveBmpARGBStrm", Strided<SaveBmpARGBStrm>(4), 4, WithExtra<4>, Packed<4>, None},
    {"SaveBmpRGBStrm", Strided<SaveBmpRGBStrm>(3), 3, WithExtra<3>, Packed<3>, PlusWidth},
    {"SaveBmpMonoStrm", Strided<SaveBmpMonoStrm>(1), 1, WithExtra<1>, Packed<1>, MinusWidth},
};

// Exactly the bytes that a writer may read: the last row ends with its pixels.
Bytes Picture(const Form& form, uint32_t width, uint32_t height) {
  std::mt19937 random(width * 1000 + height);
  Bytes image(size_t{form.pitch(width)} * (height - 1) + form.copied(width));
  for (uint8_t& byte : image) byte = static_cast<uint8_t>(random() | 1);  // no byte passes for a pad
  return image;
}

void Append(Bytes& file, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) file.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

Bytes ExpectedFile(const Form& form, const Bytes& image, uint32_t width, uint32_t height) {
  const bool mono = form.pixel_bytes == 1;
  const uint32_t pixel_data = height * (form.copied(width) + form.zeros(width));
  const uint32_t offset = mono ? 1078 : 54;
  const uint32_t resolution = mono ? 160000 : 16000;
  const uint32_t colours = mono ? 256 : 0;

  Bytes file = {'B', 'M'};
  Append(file, pixel_data + offset, 4);
  Append(file, 0, 2);
  Append(file, 0, 2);
  Append(file, offset, 4);
  Append(file, 40, 4);
  Append(file, width, 4);
  Append(file, height, 4);
  Append(file, 1, 2);
  Append(file, 8 * form.pixel_bytes, 2);
  Append(file, 0, 4);
  Append(file, pixel_data, 4);
  Append(file, resolution, 4);
  Append(file, resolution, 4);
  Append(file, colours, 4);
  Append(file, colours, 4);
  if (mono) {
    for (uint32_t i = 0; i < 256; ++i) {
      for (uint32_t channel : {i, i, i, 0u}) Append(file, channel, 1);
    }
  }
  for (uint32_t y = height; y-- > 0;) {
    const auto row = image.begin() + static_cast<ptrdiff_t>(size_t{y} * form.pitch(width));
    file.insert(file.end(), row, row + form.copied(width));
    file.insert(file.end(), form.zeros(width), 0);
  }
  return file;
}

class Bmp : public testing::TestWithParam<Form> {
 protected:
  TempFolder folder_;
  const std::string path_ = folder_ / "picture.bmp";
};

INSTANTIATE_TEST_SUITE_P(Forms, Bmp, testing::ValuesIn(kForms),
                         [](const auto& form) { return std::string(form.param.name); });

TEST_P(Bmp, EveryByteOfTheFile) {
  const Form& form = GetParam();
  // More rows than the system gathers in one call, too.
  for (uint32_t height : {1u, 2u, 7u, 1500u}) {
    for (uint32_t width : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 257u}) {
      const Bytes image = Picture(form, width, height);
      ASSERT_EQ(form.save(image.data(), width, height, path_.c_str()), UTL_STS_SUCCESS);
      const Bytes file = ReadFile(path_);
      ASSERT_EQ(file.size(), LittleEndian(file, 2, 4));
      ASSERT_EQ(file, ExpectedFile(form, image, width, height)) << width << " x " << height;
    }
  }
}

TEST_P(Bmp, NullImageAndEmptyFrameCreateNothing) {
  const Writer& save = GetParam().save;
  const Bytes image(64);
  EXPECT_EQ(save(nullptr, 2, 2, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(save(image.data(), 0, 2, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(save(image.data(), 2, 0, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(save(image.data(), 65536, 65536, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_P(Bmp, NullPathIsTestedLast) {
  const Writer& save = GetParam().save;
  const Bytes image(64);
  EXPECT_EQ(save(nullptr, 2, 2, nullptr), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(save(image.data(), 2, 0, nullptr), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(save(image.data(), 2, 2, nullptr), UTL_STS_FILE_OPEN_ERROR);
}

TEST_P(Bmp, PathsThatCannotBeOpened) {
  const Writer& save = GetParam().save;
  const Bytes image(64);
  const std::string file = folder_ / "file";
  WriteFile(file, {1});
  EXPECT_EQ(save(image.data(), 2, 2, (folder_ / "missing/picture.bmp").c_str()), UTL_STS_FILE_OPEN_ERROR);
  EXPECT_EQ(save(image.data(), 2, 2, (file + "/picture.bmp").c_str()), UTL_STS_FILE_OPEN_ERROR);
  EXPECT_EQ(save(image.data(), 2, 2, (folder_ / "").c_str()), UTL_STS_FILE_OPEN_ERROR);
  EXPECT_EQ(save(image.data(), 2, 2, ""), UTL_STS_FILE_OPEN_ERROR);
}

TEST_P(Bmp, LongerFileIsReplaced) {
  const Form& form = GetParam();
  WriteFile(path_, Bytes(5000, 0xEE));
  const Bytes image = Picture(form, 3, 2);
  ASSERT_EQ(form.save(image.data(), 3, 2, path_.c_str()), UTL_STS_SUCCESS);
  EXPECT_EQ(ReadFile(path_), ExpectedFile(form, image, 3, 2));
}

TEST_P(Bmp, FullDiskIsNotNoticed) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full here";
  const Form& form = GetParam();
  const Bytes image = Picture(form, 64, 64);
  EXPECT_EQ(form.save(image.data(), 64, 64, "/dev/full"), UTL_STS_SUCCESS);
}

TEST_P(Bmp, CallsOnDifferentPathsRunSideBySide) {
  const Form& form = GetParam();
  std::vector<std::thread> threads;
  for (uint32_t width = 1; width <= 8; ++width) {
    threads.emplace_back([&, width] {
      const Bytes image = Picture(form, width, 100);
      const std::string path = folder_ / std::to_string(width);
      EXPECT_EQ(form.save(image.data(), width, 100, path.c_str()), UTL_STS_SUCCESS);
      EXPECT_EQ(ReadFile(path), ExpectedFile(form, image, width, 100));
    });
  }
  for (std::thread& thread : threads) thread.join();
}

class BmpPads : public testing::Test {
 protected:
  TempFolder folder_;
  const std::string path_ = folder_ / "picture.bmp";
};

// The two 24-bit forms disagree about odd widths: 5 pixels are 15 bytes, which one byte would align.
TEST_F(BmpPads, SaveBmpRGBPadsByMinusWidth) {
  const Bytes pixel = {1, 2, 3};
  ASSERT_EQ(SaveBmpRGB(pixel.data(), 1, 1, path_.c_str()), UTL_STS_SUCCESS);
  const Bytes file = ReadFile(path_);
  EXPECT_EQ(file.size(), 60u);
  EXPECT_EQ(LittleEndian(file, 2, 4), 60u);
  EXPECT_EQ(LittleEndian(file, 34, 4), 6u);
  EXPECT_EQ(Bytes(file.begin() + 54, file.end()), (Bytes{1, 2, 3, 0, 0, 0}));
}

TEST_F(BmpPads, SaveBmpRGBStrmAlignsRows) {
  const Bytes pixel = {1, 2, 3};
  for (uint32_t stride : {3u, 4u, 100u}) {
    ASSERT_EQ(SaveBmpRGBStrm(pixel.data(), 1, 1, stride, path_.c_str()), UTL_STS_SUCCESS);
    const Bytes file = ReadFile(path_);
    EXPECT_EQ(file.size(), 58u);
    EXPECT_EQ(LittleEndian(file, 2, 4), 58u);
    EXPECT_EQ(LittleEndian(file, 34, 4), 4u);
    EXPECT_EQ(Bytes(file.begin() + 54, file.end()), (Bytes{1, 2, 3, 0}));
  }
}

TEST_F(BmpPads, MonoOfWidth5) {
  const Bytes image = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  ASSERT_EQ(SaveBmpMono(image.data(), 5, 2, path_.c_str()), UTL_STS_SUCCESS);
  const Bytes file = ReadFile(path_);
  EXPECT_EQ(file.size(), 1094u);
  EXPECT_EQ(LittleEndian(file, 38, 4), 160000u);
  EXPECT_EQ(LittleEndian(file, 42, 4), 160000u);
  EXPECT_EQ(LittleEndian(file, 46, 4), 256u);
  EXPECT_EQ(LittleEndian(file, 50, 4), 256u);
  EXPECT_EQ(Bytes(file.begin() + 1078, file.end()), (Bytes{6, 7, 8, 9, 10, 0, 0, 0, 1, 2, 3, 4, 5, 0, 0, 0}));
}

TEST_F(BmpPads, PadBytesOfPaddedPicturesAreKept) {
  const Bytes image = {1, 2, 3, 0xAA, 4, 5, 6, 0xBB};
  ASSERT_EQ(SaveBmpRGBPad(image.data(), 1, 2, path_.c_str()), UTL_STS_SUCCESS);
  Bytes file = ReadFile(path_);
  EXPECT_EQ(Bytes(file.begin() + 54, file.end()), (Bytes{4, 5, 6, 0xBB, 1, 2, 3, 0xAA}));
  ASSERT_EQ(SaveBmpMonoPad(image.data(), 2, 2, path_.c_str()), UTL_STS_SUCCESS);
  file = ReadFile(path_);
  EXPECT_EQ(Bytes(file.begin() + 1078, file.end()), (Bytes{4, 5, 6, 0xBB, 1, 2, 3, 0xAA}));
}

// A stride below the length of a row repeats pixels, a stride of 0 the whole row.
TEST_F(BmpPads, AnyStrideWillDo) {
  const Bytes image = {1, 2, 3, 4, 5};
  ASSERT_EQ(SaveBmpMonoStrm(image.data(), 4, 2, 1, path_.c_str()), UTL_STS_SUCCESS);
  Bytes file = ReadFile(path_);
  EXPECT_EQ(Bytes(file.begin() + 1078, file.end()), (Bytes{2, 3, 4, 5, 1, 2, 3, 4}));
  ASSERT_EQ(SaveBmpMonoStrm(image.data(), 4, 2, 0, path_.c_str()), UTL_STS_SUCCESS);
  file = ReadFile(path_);
  EXPECT_EQ(Bytes(file.begin() + 1078, file.end()), (Bytes{1, 2, 3, 4, 1, 2, 3, 4}));
}

// A row of 2^30 + 1 BGRA pixels counts as one of 4 bytes.
TEST_F(BmpPads, SizesWrapAt32Bits) {
  const Bytes image = {1, 2, 3, 4};
  ASSERT_EQ(SaveBmpARGB(image.data(), 0x40000001, 1, path_.c_str()), UTL_STS_SUCCESS);
  const Bytes file = ReadFile(path_);
  EXPECT_EQ(file.size(), 58u);
  EXPECT_EQ(LittleEndian(file, 18, 4), 0x40000001u);
  EXPECT_EQ(LittleEndian(file, 34, 4), 4u);
}

}  // namespace
}  // namespace prismo::test

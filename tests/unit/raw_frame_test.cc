// Raw frame files: what is stored, what comes back, and what files that lie about themselves do.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <random>
#include <string>
#include <thread>

#include "PrismoUtl.h"
#include "fuzz/raw_frame_fuzz.h"
#include "support/temp_folder.h"

namespace prismo::test {
namespace {

Bytes Header(uint32_t format, uint32_t width, uint32_t height, uint32_t row_bytes) {
  Bytes header;
  for (uint32_t word : {format, width, height, row_bytes}) {
    for (int shift = 0; shift < 32; shift += 8) header.push_back(static_cast<uint8_t>(word >> shift));
  }
  return header;
}

Bytes Numbered(size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), uint8_t{1});
  return bytes;
}

class RawFrame : public testing::Test {
 protected:
  ~RawFrame() override { FreeRWH(loaded_); }

  uint32_t Load() { return LoadRWH(path_.c_str(), &loaded_, &format_, &width_, &height_, &row_bytes_); }

  Bytes Loaded() const { return Bytes(loaded_, loaded_ + size_t{row_bytes_} * height_); }

  TempFolder folder_;
  const std::string path_ = folder_ / "frame.rwh";
  uint8_t* loaded_ = nullptr;
  uint32_t format_ = 0xDEAD, width_ = 0xDEAD, height_ = 0xDEAD, row_bytes_ = 0xDEAD;
};

struct Stored {
  uint32_t format, width, height, row_bytes;
};

TEST_F(RawFrame, FilesByteByByteAndBack) {
  for (const Stored& stored : {
           Stored{PRISMO_MONO8, 3, 2, 3},
           Stored{PRISMO_MONO10, 5, 1, 10},
           Stored{PRISMO_MONO12, 5, 3, 10},
           Stored{PRISMO_BAYER_RG8, 6, 4, 6},
           Stored{PRISMO_RGB8, 5, 2, 15},
           Stored{PRISMO_BGRA8, 5, 2, 20},
           Stored{PRISMO_RGB10, 5, 2, 30},
           Stored{PRISMO_BGRA10, 5, 2, 40},
           Stored{PRISMO_YUV411, 4, 2, 6},
           Stored{PRISMO_YUV411, 5, 2, 7},  // 7.5 bytes, truncated
           Stored{PRISMO_YUV422, 5, 2, 10},
           Stored{PRISMO_MONO8_PADDED, 5, 3, 8},
           Stored{PRISMO_MONO8_PADDED, 8, 3, 8},
           Stored{PRISMO_BGR8_PADDED, 5, 3, 16},
           Stored{PRISMO_BGR8_PADDED, 4, 3, 12},
           Stored{0x01010037, 20, 2, 2},  // a format of 1 bit, unknown here
           Stored{0x01FF0000, 8, 1, 255},
           Stored{PRISMO_MONO8, 300, 1000, 300},
       }) {
    SCOPED_TRACE(testing::Message() << std::hex << stored.format << ", width " << std::dec << stored.width);
    const Bytes frame = Numbered(size_t{stored.row_bytes} * stored.height);
    ASSERT_EQ(SaveRWH(frame.data(), stored.format, stored.width, stored.height, path_.c_str()),
              UTL_STS_SUCCESS);
    Bytes expected = Header(stored.format, stored.width, stored.height, stored.row_bytes);
    expected.insert(expected.end(), frame.begin(), frame.end());
    ASSERT_EQ(ReadFile(path_), expected);

    loaded_ = nullptr;
    ASSERT_EQ(Load(), UTL_STS_SUCCESS);
    EXPECT_EQ(format_, stored.format);
    EXPECT_EQ(width_, stored.width);
    EXPECT_EQ(height_, stored.height);
    EXPECT_EQ(row_bytes_, stored.row_bytes);
    EXPECT_EQ(Loaded(), frame);
    FreeRWH(loaded_);
    loaded_ = nullptr;
  }
}

TEST_F(RawFrame, NullImageAndEmptyFrameCreateNothing) {
  const Bytes frame(16);
  EXPECT_EQ(SaveRWH(nullptr, PRISMO_MONO8, 2, 2, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 0, 2, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 2, 0, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 65536, 65536, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveRWH(nullptr, PRISMO_MONO8, 2, 2, nullptr), UTL_STS_INVALID_PARAMETER);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(RawFrame, RowOf0BytesLeavesAnEmptyFile) {
  const Bytes frame(16);
  WriteFile(path_, Bytes(100, 1));
  EXPECT_EQ(SaveRWH(frame.data(), 0x01000001, 2, 2, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(ReadFile(path_), Bytes{});
  std::filesystem::remove(path_);
  EXPECT_EQ(SaveRWH(frame.data(), 0x01010001, 7, 2, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(ReadFile(path_), Bytes{});
}

// 16 bits x 2^28 pixels wrap to 0, and with one pixel more to 16.
TEST_F(RawFrame, BitsOfARowWrapAt32Bits) {
  const Bytes frame = {1, 2};
  EXPECT_EQ(SaveRWH(frame.data(), PRISMO_MONO10, 0x10000000, 1, path_.c_str()), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(SaveRWH(frame.data(), PRISMO_MONO10, 0x10000001, 1, path_.c_str()), UTL_STS_SUCCESS);
  Bytes expected = Header(PRISMO_MONO10, 0x10000001, 1, 2);
  expected.insert(expected.end(), frame.begin(), frame.end());
  EXPECT_EQ(ReadFile(path_), expected);
}

TEST_F(RawFrame, PathsThatCannotBeOpened) {
  const Bytes frame(16);
  const std::string file = folder_ / "file";
  WriteFile(file, {1});
  for (const std::string& path : {folder_ / "missing/frame.rwh", file + "/frame.rwh", std::string()}) {
    EXPECT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 2, 2, path.c_str()), UTL_STS_FILE_OPEN_ERROR) << path;
    EXPECT_EQ(LoadRWH(path.c_str(), &loaded_, &format_, nullptr, nullptr, nullptr), UTL_STS_FILE_OPEN_ERROR);
    EXPECT_EQ(LoadRWH(path.c_str(), nullptr, &format_, nullptr, nullptr, nullptr), UTL_STS_FILE_OPEN_ERROR);
  }
  EXPECT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 2, 2, nullptr), UTL_STS_FILE_OPEN_ERROR);
  EXPECT_EQ(LoadRWH(nullptr, &loaded_, &format_, nullptr, nullptr, nullptr), UTL_STS_FILE_OPEN_ERROR);
  EXPECT_EQ(format_, 0xDEADu);
  EXPECT_EQ(loaded_, nullptr);
}

TEST_F(RawFrame, FullDiskIsNotNoticed) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full here";
  const Bytes frame(100 * 100);
  EXPECT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 100, 100, "/dev/full"), UTL_STS_SUCCESS);
}

TEST_F(RawFrame, AllOutputsMayBeNull) {
  const Bytes frame = Numbered(6);
  ASSERT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 3, 2, path_.c_str()), UTL_STS_SUCCESS);
  ASSERT_EQ(LoadRWH(path_.c_str(), &loaded_, nullptr, nullptr, nullptr, nullptr), UTL_STS_SUCCESS);
  ASSERT_NE(loaded_, nullptr);
  EXPECT_EQ(Bytes(loaded_, loaded_ + 6), frame);
  loaded_[5] = 0;  // the memory is the caller's
}

TEST_F(RawFrame, NullBufferVariableStillGivesTheHeader) {
  const Bytes frame = Numbered(6);
  ASSERT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 3, 2, path_.c_str()), UTL_STS_SUCCESS);
  EXPECT_EQ(LoadRWH(path_.c_str(), nullptr, &format_, &width_, &height_, &row_bytes_),
            UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(format_, PRISMO_MONO8);
  EXPECT_EQ(width_, 3u);
  EXPECT_EQ(height_, 2u);
  EXPECT_EQ(row_bytes_, 3u);
}

TEST_F(RawFrame, CallersBufferIsUsedAsItIs) {
  const Bytes frame = Numbered(6);
  ASSERT_EQ(SaveRWH(frame.data(), PRISMO_MONO8, 3, 2, path_.c_str()), UTL_STS_SUCCESS);
  Bytes buffer(8, 0xCC);
  uint8_t* pointer = buffer.data();
  EXPECT_EQ(LoadRWH(path_.c_str(), &pointer, nullptr, nullptr, nullptr, nullptr), UTL_STS_SUCCESS);
  EXPECT_EQ(pointer, buffer.data());
  EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4, 5, 6, 0xCC, 0xCC}));
}

TEST_F(RawFrame, BytesThatAShortFileLacksStayAsTheyWere) {
  Bytes file = Header(PRISMO_MONO8, 4, 2, 4);
  file.insert(file.end(), {1, 2, 3});
  WriteFile(path_, file);

  Bytes buffer(8, 0xCC);
  uint8_t* pointer = buffer.data();
  EXPECT_EQ(LoadRWH(path_.c_str(), &pointer, nullptr, nullptr, nullptr, nullptr), UTL_STS_SUCCESS);
  EXPECT_EQ(buffer, (Bytes{1, 2, 3, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC}));

  EXPECT_EQ(Load(), UTL_STS_SUCCESS);
  EXPECT_EQ(Loaded(), (Bytes{1, 2, 3, 0, 0, 0, 0, 0}));
}

TEST_F(RawFrame, BytesAfterTheFrameAreIgnored) {
  Bytes file = Header(PRISMO_MONO8, 2, 1, 2);
  file.insert(file.end(), {1, 2, 3, 4});
  WriteFile(path_, file);
  ASSERT_EQ(Load(), UTL_STS_SUCCESS);
  EXPECT_EQ(Loaded(), (Bytes{1, 2}));
}

// Missing bytes of the header count as zero; memory for a frame of 0 bytes cannot be had.
TEST_F(RawFrame, ShortHeader) {
  const Bytes header = Header(PRISMO_MONO8, 0x01020304, 0x05060708, 0x11121314);
  for (size_t length = 0; length < header.size(); ++length) {
    SCOPED_TRACE(length);
    WriteFile(path_, Bytes(header.begin(), header.begin() + static_cast<ptrdiff_t>(length)));
    Bytes whole(header.begin(), header.begin() + static_cast<ptrdiff_t>(length));
    whole.resize(16);

    EXPECT_EQ(LoadRWH(path_.c_str(), nullptr, &format_, &width_, &height_, &row_bytes_),
              UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(format_, LittleEndian(whole, 0, 4));
    EXPECT_EQ(width_, LittleEndian(whole, 4, 4));
    EXPECT_EQ(height_, LittleEndian(whole, 8, 4));
    EXPECT_EQ(row_bytes_, LittleEndian(whole, 12, 4));

    uint8_t byte = 0xCC;
    uint8_t* pointer = &byte;
    EXPECT_EQ(LoadRWH(path_.c_str(), &pointer, nullptr, nullptr, nullptr, nullptr), UTL_STS_SUCCESS);
    EXPECT_EQ(byte, 0xCC);

    if (length <= 12) {
      EXPECT_EQ(Load(), UTL_STS_FILE_READ_ERROR);
      EXPECT_EQ(loaded_, nullptr);
    }
  }
}

TEST_F(RawFrame, HeaderOf0BytesPerRow) {
  WriteFile(path_, Header(PRISMO_MONO8, 4, 2, 0));
  EXPECT_EQ(Load(), UTL_STS_FILE_READ_ERROR);
  EXPECT_EQ(loaded_, nullptr);
  EXPECT_EQ(width_, 4u);
  uint8_t byte = 0xCC;
  uint8_t* pointer = &byte;
  EXPECT_EQ(LoadRWH(path_.c_str(), &pointer, nullptr, nullptr, nullptr, nullptr), UTL_STS_SUCCESS);
  EXPECT_EQ(byte, 0xCC);
}

// The product counts in 32 bits: 0x10001 x 0x10001 bytes are 0x20001.
TEST_F(RawFrame, FrameBytesWrapAt32Bits) {
  Bytes file = Header(PRISMO_MONO8, 1, 0x10001, 0x10001);
  const Bytes frame = Numbered(0x20001);
  file.insert(file.end(), frame.begin(), frame.end());
  file.insert(file.end(), 100, 0xEE);
  WriteFile(path_, file);
  Bytes buffer(0x20001 + 4, 0xCC);
  uint8_t* pointer = buffer.data();
  ASSERT_EQ(LoadRWH(path_.c_str(), &pointer, nullptr, nullptr, nullptr, nullptr), UTL_STS_SUCCESS);
  EXPECT_TRUE(std::equal(frame.begin(), frame.end(), buffer.begin()));
  EXPECT_EQ(Bytes(buffer.end() - 4, buffer.end()), Bytes(4, 0xCC));
}

// Memory that a file asks for without having the bytes is never touched; where there is not even that much to
// promise, loading fails.
TEST_F(RawFrame, HostileSizes) {
  for (const auto& [height, row_bytes] :
       {std::pair{1u, 0xFFFFFFFFu}, {0xFFFFFFFFu, 1u}, {0xFFFFu, 0xFFFFu}}) {
    Bytes file = Header(0xFFFFFFFF, 0xFFFFFFFF, height, row_bytes);
    file.insert(file.end(), {1, 2, 3});
    WriteFile(path_, file);
    const uint32_t status = Load();
    EXPECT_EQ(height_, height);
    EXPECT_EQ(row_bytes_, row_bytes);
    if (status == UTL_STS_SUCCESS) {
      ASSERT_NE(loaded_, nullptr);
      EXPECT_EQ(Bytes(loaded_, loaded_ + 4), (Bytes{1, 2, 3, 0}));
      EXPECT_EQ(loaded_[size_t{height * row_bytes} - 1], 0);
    } else {
      EXPECT_EQ(status, UTL_STS_FILE_READ_ERROR);
      EXPECT_EQ(loaded_, nullptr);
    }
    FreeRWH(loaded_);
    loaded_ = nullptr;
  }
}

// The fuzzer's own checks on files that are whole, cut, too long, or lie about their size.
TEST_F(RawFrame, ArbitraryFilesDoNoHarm) {
  const uint32_t seed = 20240611;
  std::printf("seed %u\n", seed);
  std::minstd_rand engine(seed);
  const auto random = [&] { return static_cast<uint32_t>(engine()); };
  const uint32_t sizes[] = {0, 1, 2, 7, 64, 0xFFFF, 0x10000, 0x10001, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  for (const uint32_t height : sizes) {
    for (const uint32_t row_bytes : sizes) {
      Bytes file = Header(random(), random(), height, row_bytes);
      for (uint32_t i = random() % 64; i > 0; --i) file.push_back(static_cast<uint8_t>(random()));
      FuzzRawFrame(file.data(), file.size());
    }
  }
  for (int i = 0; i < 200; ++i) {
    Bytes file(random() % 64);
    for (uint8_t& byte : file) byte = static_cast<uint8_t>(random() % 3 == 0 ? random() : 0);
    FuzzRawFrame(file.data(), file.size());
  }
}

#ifndef _WIN32  // where a file that is open keeps its length
// What it had while it was read is there, the rest is as in a file that is short from the start.
TEST_F(RawFrame, AFileThatShrinksWhileItIsRead) {
  constexpr uint32_t kSide = 256;
  const Bytes content(size_t{kSide} * kSide, 0x77);
  ASSERT_EQ(SaveRWH(content.data(), PRISMO_MONO8, kSide, kSide, path_.c_str()), UTL_STS_SUCCESS);
  std::atomic<bool> stop{false};
  std::thread shrinker([&] {
    for (uint32_t round = 0; !stop; ++round) {
      std::filesystem::resize_file(path_, 16 + (round % 2 ? kSide * kSide : round % 50'000));
    }
  });
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(Load(), UTL_STS_SUCCESS);
    const Bytes loaded = Loaded();
    // Grown again, the file holds zeros.
    ASSERT_TRUE(std::ranges::all_of(loaded, [](uint8_t byte) { return byte == 0x77 || byte == 0; }));
    FreeRWH(loaded_);
    loaded_ = nullptr;
  }
  stop = true;
  shrinker.join();
}
#endif

TEST_F(RawFrame, FreeingNullDoesNothing) { FreeRWH(nullptr); }

}  // namespace
}  // namespace prismo::test

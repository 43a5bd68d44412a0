// Whole logs through the converter: whole, cut short, lying, and unreadable.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/log_text_fuzz.h"
#include "mp/log.h"
#include "mp/log_text.h"
#include "support/temp_folder.h"

#ifndef _WIN32
#include <sys/stat.h>

#include <thread>
#endif

namespace prismo::mp {
namespace {

using test::ReadText;
using test::TempFolder;
using test::WriteText;

const std::string kEmptyHeader =
    "\n\n=============================================================\n\n"
    "Log date: 0/0/0 0:0:0\n\n"
    "Performance frequency: 0\n\n"
    "CPU core number: 0\r\n"
    "Log data version: Ver0.0.0\r\n";

const std::string kHeader =
    "\n\n=============================================================\n\n"
    "Log date: 2030/12/31 23:59:58\n\n"
    "Performance frequency: 1000\n\n"
    "CPU core number: 4\r\n"
    "Log data version: Ver1.0.0\r\n";

std::string HeaderBytes(uint32_t record_count) {
  LogFileHeader header;
  header.version = {1, 0, 0};
  header.date = {.year = 2030, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 58};
  header.cores = 4;
  header.frequency = 1000;
  header.base_stamp = 100;
  header.record_count = record_count;
  const LogFileHeaderBytes bytes = EncodeLogHeader(header);
  return {bytes.begin(), bytes.end()};
}

std::string Bytes(const LogRecord& record) {
  std::string bytes(sizeof(record), '\0');
  std::memcpy(bytes.data(), &record, sizeof(record));
  return bytes;
}

// Of function "PrepareLUT", which has no messages of its own.
LogRecord RecordOf(uint32_t stamp, uint32_t level) {
  return {.stamp = stamp, .function = 20, .level = level, .thread_id = 1, .work_id = 2, .kind = 4};
}

std::string LineOf(const std::string& stamp) {
  return stamp + " ThreadID:000001 WorkID:0002 PrepareLUT                   Finished.\n";
}

std::string Render(const std::string& log, uint32_t level = 0) {
  std::istringstream in(log);
  std::ostringstream out;
  RenderLog(in, out, level);
  return out.str();
}

TEST(LogText, OneLineForEachRecordInTheOrderOfTheFile) {
  const std::string log =
      HeaderBytes(3) + Bytes(RecordOf(300, 1)) + Bytes(RecordOf(101, 1)) + Bytes(RecordOf(99, 1));
  EXPECT_EQ(Render(log), kHeader + LineOf("00000200") + LineOf("00000001") + LineOf("4294967295"));
}

TEST(LogText, RecordsBelowTheLevelAreLeftOut) {
  std::string log = HeaderBytes(5);
  for (uint32_t level = 0; level < 5; ++level) log += Bytes(RecordOf(100 + level, level));
  EXPECT_EQ(Render(log, 5), kHeader);
  EXPECT_EQ(Render(log, 4), kHeader + LineOf("00000004"));
  EXPECT_EQ(Render(log, 3), kHeader + LineOf("00000003") + LineOf("00000004"));
  EXPECT_EQ(Render(log, 0), kHeader + LineOf("00000000") + LineOf("00000001") + LineOf("00000002") +
                                LineOf("00000003") + LineOf("00000004"));
}

TEST(LogText, LevelsCompareUnsigned) {
  const std::string log = HeaderBytes(2) + Bytes(RecordOf(101, 0x80000000)) + Bytes(RecordOf(102, 3));
  EXPECT_EQ(Render(log, 4), kHeader + LineOf("00000001"));
  EXPECT_EQ(Render(log, 0xFFFFFFFF), kHeader);
}

TEST(LogText, RecordsOfNoFunctionGiveNoLine) {
  LogRecord nameless = RecordOf(101, 4);
  nameless.function = 337;
  LogRecord beyond = RecordOf(102, 4);
  beyond.function = 0xFFFFFFFF;
  EXPECT_EQ(Render(HeaderBytes(3) + Bytes(nameless) + Bytes(beyond) + Bytes(RecordOf(103, 4))),
            kHeader + LineOf("00000003"));
}

TEST(LogText, RecordsBeyondTheCountAreNotRead) {
  EXPECT_EQ(Render(HeaderBytes(1) + Bytes(RecordOf(101, 0)) + Bytes(RecordOf(102, 0))),
            kHeader + LineOf("00000001"));
  EXPECT_EQ(Render(HeaderBytes(0) + Bytes(RecordOf(101, 0))), kHeader);
}

TEST(LogText, ACountBeyondTheDataRendersTheWholeRecordsThatAreThere) {
  const std::string two = Bytes(RecordOf(101, 0)) + Bytes(RecordOf(102, 0));
  for (uint32_t count : {3u, 1000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_EQ(Render(HeaderBytes(count) + two), kHeader + LineOf("00000001") + LineOf("00000002"));
  }
}

TEST(LogText, ARecordCutShortIsLeftOut) {
  const std::string log = HeaderBytes(2) + Bytes(RecordOf(101, 0)) + Bytes(RecordOf(102, 0));
  for (size_t missing = 1; missing <= 64; ++missing) {
    EXPECT_EQ(Render(log.substr(0, log.size() - missing)), kHeader + LineOf("00000001")) << missing;
  }
}

TEST(LogText, WhatAShortHeaderLacksIsZero) {
  EXPECT_EQ(Render(""), kEmptyHeader);
  const std::string header = HeaderBytes(0xFFFFFFFF);
  EXPECT_EQ(Render(header.substr(0, 8)), kEmptyHeader);
  EXPECT_EQ(Render(header.substr(0, 21)),
            "\n\n=============================================================\n\n"
            "Log date: 238/0/0 0:0:0\n\n"
            "Performance frequency: 0\n\n"
            "CPU core number: 0\r\n"
            "Log data version: Ver1.0.0\r\n");
  EXPECT_EQ(Render(header.substr(0, 47)), kHeader);
}

TEST(LogText, ALogAsLargeAsTheRingCanBeAndLarger) {
  constexpr uint32_t kRecords = 25000;
  std::string log = HeaderBytes(kRecords);
  for (uint32_t i = 0; i < kRecords; ++i) log += Bytes(RecordOf(100 + i, i % 5));
  const std::string text = Render(log, 4);
  EXPECT_EQ(text.size(), kHeader.size() + kRecords / 5 * LineOf("00000000").size());
  EXPECT_TRUE(text.ends_with(LineOf("00024999")));
}

TEST(ConvertLog, WritesTheTextFileByteForByte) {
  const TempFolder folder;
  WriteText(folder / "in.pxu", HeaderBytes(1) + Bytes(RecordOf(101, 2)));
  WriteText(folder / "out.txt", std::string(5000, 'x'));
  EXPECT_EQ(ConvertLog((folder / "in.pxu").c_str(), (folder / "out.txt").c_str(), 2), Status::kSuccess);
  EXPECT_EQ(ReadText(folder / "out.txt"), kHeader + LineOf("00000001"));
  EXPECT_EQ(ConvertLog((folder / "in.pxu").c_str(), (folder / "out.txt").c_str(), 3), Status::kSuccess);
  EXPECT_EQ(ReadText(folder / "out.txt"), kHeader);
}

TEST(ConvertLog, AnEmptyFileIsALogOfZeros) {
  const TempFolder folder;
  WriteText(folder / "in.pxu", "");
  EXPECT_EQ(ConvertLog((folder / "in.pxu").c_str(), (folder / "out.txt").c_str(), 0), Status::kSuccess);
  EXPECT_EQ(ReadText(folder / "out.txt"), kEmptyHeader);
}

TEST(ConvertLog, WithoutTheInputTheOutputIsNotTouched) {
  const TempFolder folder;
  WriteText(folder / "kept.txt", "kept");
  EXPECT_EQ(ConvertLog((folder / "none.pxu").c_str(), (folder / "kept.txt").c_str(), 0),
            Status::kFileOpenError);
  EXPECT_EQ(ReadText(folder / "kept.txt"), "kept");
  EXPECT_EQ(ConvertLog((folder / "none.pxu").c_str(), (folder / "new.txt").c_str(), 0),
            Status::kFileOpenError);
  EXPECT_FALSE(std::filesystem::exists(folder / "new.txt"));
}

TEST(ConvertLog, FilesThatCannotBeOpened) {
  const TempFolder folder;
  WriteText(folder / "in.pxu", HeaderBytes(0));
  const std::string in = folder / "in.pxu";
  const std::string out = folder / "out.txt";
  EXPECT_EQ(ConvertLog(in.c_str(), (folder / "missing/out.txt").c_str(), 0), Status::kFileOpenError);
  EXPECT_EQ(ConvertLog(in.c_str(), (folder / "").c_str(), 0), Status::kFileOpenError);
  EXPECT_EQ(ConvertLog((folder / "").c_str(), out.c_str(), 0), Status::kFileOpenError);
  EXPECT_EQ(ConvertLog("", out.c_str(), 0), Status::kFileOpenError);
  EXPECT_EQ(ConvertLog(in.c_str(), "", 0), Status::kFileOpenError);
  EXPECT_EQ(ConvertLog(nullptr, out.c_str(), 0), Status::kFileOpenError);
  EXPECT_EQ(ConvertLog(in.c_str(), nullptr, 0), Status::kFileOpenError);
  EXPECT_FALSE(std::filesystem::exists(out));
}

// The input is open, but nothing of it is left once the output has been truncated.
TEST(ConvertLog, OntoItself) {
  const TempFolder folder;
  WriteText(folder / "log", HeaderBytes(1) + Bytes(RecordOf(101, 0)));
  EXPECT_EQ(ConvertLog((folder / "log").c_str(), (folder / "log").c_str(), 0), Status::kSuccess);
  EXPECT_EQ(ReadText(folder / "log"), kEmptyHeader);
}

#ifdef __linux__

TEST(ConvertLog, AnOutputWithoutRoomIsAReadError) {
  const TempFolder folder;
  WriteText(folder / "in.pxu", HeaderBytes(0));
  EXPECT_EQ(ConvertLog((folder / "in.pxu").c_str(), "/dev/full", 0), Status::kFileReadError);
}

TEST(ConvertLog, AnInputThatFailsIsAReadError) {
  const TempFolder folder;
  EXPECT_EQ(ConvertLog("/proc/self/mem", (folder / "out.txt").c_str(), 0), Status::kFileReadError);
}

TEST(ConvertLog, AnEndlessInputOfZerosHasNoRecords) {
  const TempFolder folder;
  EXPECT_EQ(ConvertLog("/dev/zero", (folder / "out.txt").c_str(), 0), Status::kSuccess);
  EXPECT_EQ(ReadText(folder / "out.txt"), kEmptyHeader);
}

#endif
#ifndef _WIN32

TEST(ConvertLog, APipeIsReadAsItComes) {
  const TempFolder folder;
  const std::string pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] {
    const std::string log =
        HeaderBytes(0xFFFFFFFF) + Bytes(RecordOf(101, 0)) + Bytes(RecordOf(102, 0)) + "rest";
    std::ofstream file(pipe, std::ios::binary);
    for (char c : log) (file << c).flush();
  });
  EXPECT_EQ(ConvertLog(pipe.c_str(), (folder / "out.txt").c_str(), 0), Status::kSuccess);
  writer.join();
  EXPECT_EQ(ReadText(folder / "out.txt"), kHeader + LineOf("00000001") + LineOf("00000002"));
}

#endif

// The fuzzer's own checks on logs that are well-formed, cut, or damaged.
TEST(LogTextFuzz, SeedsReplay) {
  constexpr uint32_t kSeed = 20240611;
  RecordProperty("seed", kSeed);
  std::mt19937 generator(kSeed);
  const auto random = [&] { return static_cast<uint32_t>(generator()); };
  const auto replay = [](const std::string& bytes) {
    test::FuzzLogText(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  };
  for (size_t size = 0; size < 300; ++size) {
    std::string noise(size, '\0');
    for (char& c : noise) c = static_cast<char>(random());
    replay(noise);
    replay(std::string(size, '\0'));
    replay(std::string(size, '\xFF'));
  }
  for (int run = 0; run < 300; ++run) {
    std::string log(1, '\0');
    const uint32_t records = random() % 40;
    log += HeaderBytes(run % 3 == 0 ? random() : records);
    for (uint32_t i = 0; i < records; ++i) {
      LogRecord record{.stamp = random(), .function = random() % 345, .level = random() % 6};
      record.kind = random() % 9;
      for (uint32_t& argument : record.arguments) argument = random() % 3 == 0 ? 0 : random();
      log += Bytes(record);
    }
    for (int damage = run % 4; damage > 0; --damage) log[random() % log.size()] = static_cast<char>(random());
    replay(log.substr(0, log.size() - (run % 2 ? random() % log.size() : 0)));
  }
}

}  // namespace
}  // namespace prismo::mp

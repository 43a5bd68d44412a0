// The log of a pool: what it records, when it is saved, and that the saved file can be rendered.
#include "mp/log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "mp/log_file.h"
#include "platform/folders.h"
#include "platform/process.h"
#include "platform/processors.h"
#include "platform/tick_counter.h"
#include "support/scoped_environment.h"
#include "support/temp_folder.h"

#ifndef _WIN32
#include <sys/resource.h>

#include <csignal>
#endif

namespace prismo::mp {
namespace {

using test::ReadText;
using test::ScopedEnvironment;
using test::TempFolder;
using test::WriteText;

struct SavedLog {
  std::string mark;
  LogFileHeader header;
  std::vector<LogRecord> records;
};

// A kit with a configuration file and a folder for logs.
class LogTest : public testing::Test {
 protected:
  LogTest() { std::filesystem::create_directories(folder_ / "kit/PrismoApi/bin/x64"); }

  // The keys of the library's line, before its path.
  void Configure(const std::string& keys) { ConfigureWithFolder(keys, folder_ / "logs"); }
  void ConfigureWithFolder(const std::string& keys, const std::string& logs) {
    WriteText(folder_ / "kit/PrismoApi/bin/x64/PrismoUtl.cfg", "PrismoUtl: " + keys + " PATH=" + logs + "\n");
  }

  std::vector<std::string> SavedFiles() const {
    std::vector<std::string> files;
    if (!std::filesystem::exists(folder_ / "logs")) return files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "logs")) {
      files.push_back(entry.path().string());
    }
    std::ranges::sort(files);
    return files;
  }

  static SavedLog ReadSaved(const std::string& path) {
    const test::Bytes bytes = test::ReadFile(path);
    SavedLog saved;
    LogFileHeaderBytes header{};
    EXPECT_GE(bytes.size(), header.size());
    std::memcpy(header.data(), bytes.data(), std::min(bytes.size(), header.size()));
    saved.mark.assign(bytes.begin(), bytes.begin() + 8);
    saved.header = DecodeLogHeader(header);
    saved.records.resize((bytes.size() - header.size()) / sizeof(LogRecord));
    EXPECT_EQ(bytes.size(), header.size() + saved.records.size() * sizeof(LogRecord));
    std::memcpy(saved.records.data(), bytes.data() + header.size(), bytes.size() - header.size());
    return saved;
  }

  // The log as a pool that ends would leave it.
  SavedLog SaveAndRead(Log& log) {
    log.SetTerminationLog(true);
    log.SaveAtTermination();
    const std::vector<std::string> files = SavedFiles();
    EXPECT_EQ(files.size(), 1u);
    return files.empty() ? SavedLog{} : ReadSaved(files.front());
  }

  const TempFolder folder_;
  const ScopedEnvironment data_{"XDG_DATA_HOME", folder_ / "data"};
  const ScopedEnvironment kit_{"PRISMOSDK", folder_ / "kit"};
};

LogEvent EventOf(LogLevel level, uint32_t work_id = 0) {
  return {
      .function = LogFunction::kWorkSetStatus, .kind = LogKind::kCalled, .level = level, .work_id = work_id};
}

TEST_F(LogTest, DefaultsWithoutAConfiguration) {
  const Log log;
  EXPECT_EQ(log.Level(), 0u);
  EXPECT_FALSE(log.SaveOnError());
  EXPECT_FALSE(log.TerminationLog());
}

TEST_F(LogTest, TheConfigurationApplies) {
  Configure("SaveOnError ERROR");
  Log log;
  EXPECT_EQ(log.Level(), 3u);
  EXPECT_TRUE(log.SaveOnError());
  EXPECT_TRUE(log.TerminationLog());
  log.SetLevel(1);
  log.SetSaveOnError(false);
  log.SetTerminationLog(false);
  EXPECT_EQ(log.Level(), 1u);
  EXPECT_FALSE(log.SaveOnError());
  EXPECT_FALSE(log.TerminationLog());
  const Log next;
  EXPECT_EQ(next.Level(), 3u);
  EXPECT_TRUE(next.SaveOnError());
}

TEST_F(LogTest, WantsTheLevelAndAbove) {
  Log log;
  log.SetLevel(2);
  EXPECT_FALSE(log.Wants(LogLevel::kDebug));
  EXPECT_FALSE(log.Wants(LogLevel::kInfo));
  EXPECT_TRUE(log.Wants(LogLevel::kWarn));
  EXPECT_TRUE(log.Wants(LogLevel::kError));
  EXPECT_TRUE(log.Wants(LogLevel::kFatal));
}

TEST_F(LogTest, TheFirstRecordIsTheStart) {
  Configure("FATAL");
  const uint64_t before = platform::TickCount();
  Log log;
  const SavedLog saved = SaveAndRead(log);
  ASSERT_EQ(saved.records.size(), 1u);
  const LogRecord& start = saved.records[0];
  EXPECT_GE(start.stamp, before);
  EXPECT_LE(start.stamp, platform::TickCount());
  EXPECT_EQ(start.function, 0u);
  EXPECT_EQ(start.level, 1u);
  EXPECT_EQ(start.thread_id, platform::ThreadId());
  EXPECT_EQ(start.work_id, 0u);
  EXPECT_EQ(start.kind, 0u);
  EXPECT_EQ(start.arguments, (std::array<uint32_t, 8>{}));
  EXPECT_EQ(start.unused, 0u);
  EXPECT_EQ(saved.header.base_stamp, start.stamp);
}

TEST_F(LogTest, RecordsBelowTheLevelAreNotMade) {
  Configure("WARN");
  Log log;
  for (LogLevel level :
       {LogLevel::kDebug, LogLevel::kInfo, LogLevel::kWarn, LogLevel::kError, LogLevel::kFatal}) {
    log.Record(EventOf(level, 1 + static_cast<uint32_t>(level)));
  }
  const SavedLog saved = SaveAndRead(log);
  ASSERT_EQ(saved.records.size(), 4u);
  EXPECT_EQ(saved.records[1].work_id, 3u);
  EXPECT_EQ(saved.records[2].work_id, 4u);
  EXPECT_EQ(saved.records[3].work_id, 5u);
}

TEST_F(LogTest, AnEventIsRecordedWhole) {
  Configure("");
  Log log;
  uint32_t other_thread = 0;
  std::thread writer([&] {
    other_thread = platform::ThreadId();
    log.Record({.function = LogFunction::kGBRG8ToBGRFS_WK,
                .kind = LogKind::kStep2,
                .level = LogLevel::kInfo,
                .work_id = 12,
                .arguments = {1, 2, 3, 4, 5, 6, 7, 0xFFFFFFFF}});
  });
  writer.join();
  const LogRecord record = SaveAndRead(log).records.at(1);
  EXPECT_EQ(record.function, 333u);
  EXPECT_EQ(record.kind, 2u);
  EXPECT_EQ(record.level, 1u);
  EXPECT_EQ(record.work_id, 12u);
  EXPECT_EQ(record.thread_id, other_thread);
  EXPECT_NE(record.thread_id, platform::ThreadId());
  EXPECT_EQ(record.arguments, (std::array<uint32_t, 8>{1, 2, 3, 4, 5, 6, 7, 0xFFFFFFFF}));
}

TEST_F(LogTest, SizesOfTheConfiguration) {
  struct Case {
    const char* keys;
    size_t records;
  };
  for (const Case& c : {Case{"", 1024}, Case{"Size1,", 2048}, Case{"Size4,", 10000}, Case{"Size9,", 10000}}) {
    Configure(c.keys);
    Log log;
    for (uint32_t i = 1; i <= 11000; ++i) log.Record(EventOf(LogLevel::kInfo, i));
    const SavedLog saved = SaveAndRead(log);
    EXPECT_EQ(saved.records.size(), c.records);
    EXPECT_EQ(saved.records.front().work_id, 11001 - c.records);
    EXPECT_EQ(saved.records.back().work_id, 11000u);
    EXPECT_EQ(saved.header.record_count, c.records);
    EXPECT_LT(saved.header.base_stamp, saved.records.front().stamp) << "the start, though it was overwritten";
    std::filesystem::remove_all(folder_ / "logs");
  }
}

TEST_F(LogTest, HeaderAndNameOfASavedLog) {
  Configure("");
  Log log;
  const SavedLog saved = SaveAndRead(log);
  EXPECT_EQ(saved.mark, "PRISMOLG");
  EXPECT_EQ(saved.header.version, (std::array<uint8_t, 3>{1, 0, 0}));
  EXPECT_EQ(saved.header.frequency, platform::TickFrequency());
  EXPECT_EQ(saved.header.cores, std::min(platform::ProcessorCount(), 255));
  const test::Bytes bytes = test::ReadFile(SavedFiles().front());
  EXPECT_TRUE(std::all_of(bytes.begin() + 11, bytes.begin() + 20, [](uint8_t byte) { return byte == 0; }));

  const std::string name = std::filesystem::path(SavedFiles().front()).filename().string();
  const platform::LocalTime& date = saved.header.date;
  char expected[100];
  std::snprintf(expected, sizeof(expected), "PrismoUtl-%04d%02d%02d-%02d%02d%02d-%u-1.pxu", date.year,
                date.month, date.day, date.hour, date.minute, date.second, platform::ProcessId());
  EXPECT_EQ(name, expected);
}

TEST_F(LogTest, TheDateIsNow) {
  Configure("");
  Log log;
  const auto minute_of_the_day = [](const platform::LocalTime& t) { return t.hour * 60 + t.minute; };
  const platform::LocalTime before = platform::LocalTimeNow();
  const platform::LocalTime date = SaveAndRead(log).header.date;
  const int elapsed = (minute_of_the_day(date) - minute_of_the_day(before) + 24 * 60) % (24 * 60);
  EXPECT_LE(elapsed, 2);
  EXPECT_GE(date.year, 2024);
}

TEST_F(LogTest, TerminationSavesOnlyIfTheFlagIsSet) {
  Configure("NoTerminationLog");
  Log log;
  log.SaveAtTermination();
  EXPECT_TRUE(SavedFiles().empty());
  log.SetTerminationLog(true);
  log.SaveAtTermination();
  EXPECT_EQ(SavedFiles().size(), 1u);
}

TEST_F(LogTest, AnErrorSavesOnce) {
  Configure("SaveOnError NoTerminationLog");
  Log log;
  log.SaveIfErrorPending();
  log.Record(EventOf(LogLevel::kWarn));
  log.SaveIfErrorPending();
  EXPECT_TRUE(SavedFiles().empty());
  log.Record(EventOf(LogLevel::kError, 9));
  EXPECT_TRUE(SavedFiles().empty()) << "not while locks may be held";
  log.SaveIfErrorPending();
  ASSERT_EQ(SavedFiles().size(), 1u);
  EXPECT_EQ(ReadSaved(SavedFiles().front()).records.back().work_id, 9u);
  log.Record(EventOf(LogLevel::kError));
  log.SaveIfErrorPending();
  EXPECT_EQ(SavedFiles().size(), 1u);
  Log next;
  next.Record(EventOf(LogLevel::kFatal));
  next.SaveIfErrorPending();
  EXPECT_EQ(SavedFiles().size(), 2u);
}

TEST_F(LogTest, AnErrorSavesOnlyIfTheFlagIsSet) {
  Configure("");
  Log log;
  log.Record(EventOf(LogLevel::kError));
  log.SaveIfErrorPending();
  EXPECT_TRUE(SavedFiles().empty());
  log.SetSaveOnError(true);
  log.SaveIfErrorPending();
  EXPECT_EQ(SavedFiles().size(), 1u);
}

TEST_F(LogTest, AnErrorBelowTheLevelIsNone) {
  Configure("SaveOnError FATAL");
  Log log;
  log.Record(EventOf(LogLevel::kError));
  log.SaveIfErrorPending();
  EXPECT_TRUE(SavedFiles().empty());
}

TEST_F(LogTest, ManyThreadsSaveAnErrorOnce) {
  Configure("SaveOnError");
  Log log;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < 50; ++n) {
        log.Record(EventOf(LogLevel::kError));
        log.SaveIfErrorPending();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(SavedFiles().size(), 1u);
}

TEST_F(LogTest, SavesOfOneSecondHaveFilesOfTheirOwn) {
  Configure("");
  for (uint32_t i = 0; i < 20; ++i) {
    Log log;
    log.Record(EventOf(LogLevel::kInfo, 100 + i));
    log.SaveAtTermination();
  }
  std::vector<uint32_t> found;
  for (const std::string& file : SavedFiles()) found.push_back(ReadSaved(file).records.at(1).work_id);
  std::ranges::sort(found);
  ASSERT_EQ(found.size(), 20u);
  EXPECT_EQ(found.front(), 100u);
  EXPECT_EQ(found.back(), 119u);
}

TEST_F(LogTest, WithoutAPathTheLogGoesToTheUsersFolder) {
  WriteText(folder_ / "kit/PrismoApi/bin/x64/PrismoUtl.cfg", "PrismoUtl");
#ifndef _WIN32
  Log log;
  log.SaveAtTermination();
  const std::filesystem::directory_iterator files(folder_ / "data/HALDEN VEXO/PrismoSDK");
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
#endif
}

TEST_F(LogTest, AFolderThatIsMissingOrAFileDropsTheLog) {
  ConfigureWithFolder("SaveOnError", folder_ / "missing/logs");
  {
    Log log;
    log.Record(EventOf(LogLevel::kError));
    log.SaveIfErrorPending();
    log.SaveAtTermination();
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ / "missing"));

  WriteText(folder_ / "file", "kept");
  ConfigureWithFolder("SaveOnError", folder_ / "file");
  {
    Log log;
    log.SaveAtTermination();
  }
  EXPECT_EQ(ReadText(folder_ / "file"), "kept");
}

#ifndef _WIN32
// A limit on the length of files fails writes as a full disk does.
TEST_F(LogTest, AFullDiskLeavesNoLog) {
  Configure("");
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit limit = {60, before.rlim_max};
  for (const uint32_t records :
       {1, 200}) {  // what is noticed when the file is closed, and while it is written
    Log log;
    for (uint32_t i = 0; i < records; ++i) log.Record(EventOf(LogLevel::kError, i));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    log.SaveAtTermination();
    setrlimit(RLIMIT_FSIZE, &before);
  }
  EXPECT_TRUE(std::filesystem::exists(folder_ / "logs"));
  EXPECT_TRUE(SavedFiles().empty());
}

TEST_F(LogTest, WithoutAFolderTheLogIsDropped) {
  const ScopedEnvironment data("XDG_DATA_HOME", std::nullopt);
  const ScopedEnvironment home("HOME", std::nullopt);
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::create_directories(folder_ / "here");
  std::filesystem::current_path(folder_ / "here");
  {
    Log log;
    log.SetTerminationLog(true);
    log.SaveAtTermination();
  }
  std::filesystem::current_path(before);
  EXPECT_TRUE(std::filesystem::is_empty(folder_ / "here"));
}
#endif

TEST_F(LogTest, SavedLogsRenderAsText) {
  Configure("");
  Log log;
  log.Record({.function = LogFunction::kManagerExecWork,
              .kind = LogKind::kFinished,
              .level = LogLevel::kError,
              .work_id = 3,
              .arguments = {2, 0xABCDEF, 0, 1023, 18}});
  log.Record({.function = LogFunction::kMPWork,
              .kind = LogKind::kFinished,
              .level = LogLevel::kDebug,
              .work_id = 3});
  log.Record({.function = LogFunction::kBGGR8ToBGRA_WK,
              .kind = LogKind::kStep1,
              .level = LogLevel::kInfo,
              .work_id = 3,
              .arguments = {64, 32}});
  const SavedLog saved = SaveAndRead(log);
  ASSERT_EQ(ConvertLog(SavedFiles().front().c_str(), (folder_ / "log.txt").c_str(), 1), Status::kSuccess);

  const std::string text = ReadText(folder_ / "log.txt");
  const std::string version = "Log data version: Ver1.0.0\r\n";
  const size_t first_line = text.find(version);
  ASSERT_NE(first_line, std::string::npos);
  char expected[400];
  const auto since = [&](size_t i) {
    return static_cast<uint32_t>(saved.records.at(i).stamp - saved.header.base_stamp);
  };
  const uint32_t thread = platform::ThreadId();
  std::snprintf(expected, sizeof(expected),
                "00000000 ThreadID:%06x WorkID:0000 MPManager                    Instance created.\n"
                "%08u ThreadID:%06x WorkID:0003 MPManager::ExecWork          "
                "Type 2 finished in failure.  Callback:00abcdef, FirstY:   0, LastY:1023, status:00000012.\n"
                "%08u ThreadID:%06x WorkID:0003 BGGR8ToBGRA_WK               "
                "Got row range to calculate. Start:64, len:32\n",
                thread, since(1), thread, since(3), thread);
  EXPECT_EQ(text.substr(first_line + version.size()), expected);
}

}  // namespace
}  // namespace prismo::mp

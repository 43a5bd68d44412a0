#include <cstring>

#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

class LogTest : public ToolTest {
 protected:
  // A saved log that says it holds `count` records, and holds a "pool created" record of level INFO.
  void WriteLog(uint32_t count) {
    Bytes log(48 + 64);
    log[20] = 2026 % 256;
    log[21] = 2026 / 256;
    log[22] = 11;
    log[23] = 21;
    std::memcpy(&log[44], &count, 4);
    log[48 + 12] = 1;
    WriteFile(Path("l.pxu"), log);
  }
};

TEST_F(LogTest, PrintsOrWritesText) {
  WriteLog(1);
  const std::string text = RunWell("log l.pxu");
  EXPECT_NE(text.find("Log date: 2026/11/21"), std::string::npos) << text;
  EXPECT_NE(text.find("Instance created."), std::string::npos) << text;
  RunWell("log l.pxu -o l.txt --level info");
  EXPECT_EQ(ReadText(Path("l.txt")), text);
  EXPECT_EQ(RunWell("log l.pxu --level warn").find("Instance created."), std::string::npos);
}

TEST_F(LogTest, WhatIsNoLog) {
  WriteLog(2);
  ExpectFailure("log l.pxu", {"l.pxu", "says 2 records", "holds 1"});
  WriteLog(0xFFFFFFFF);
  ExpectFailure("log l.pxu", {"says 4294967295 records"});
  WriteText(Path("short.pxu"), "short");
  ExpectFailure("log short.pxu", {"48 header bytes", "has 5"});
  ExpectFailure("log none.pxu", {"none.pxu", "no such file"});
  WriteLog(1);
  ExpectFailure("log l.pxu --level loud", {"'loud'", "debug, info"});
  ExpectFailure("log l.pxu -o none/l.txt", {"no folder"});
}

TEST_F(LogTest, TheLogItselfIsNotReplaced) {
  WriteLog(1);
  const Bytes log = Content("l.pxu");
  ExpectFailure("log l.pxu -o ./l.pxu", {"./l.pxu: is an input"});
  EXPECT_EQ(Content("l.pxu"), log);
}

TEST_F(LogTest, TextThatCannotBeWritten) {
  WriteLog(1000);
  Bytes log = Content("l.pxu");
  const Bytes record(log.end() - 64, log.end());
  for (int i = 1; i < 1000; ++i) log.insert(log.end(), record.begin(), record.end());
  WriteFile(Path("l.pxu"), log);
  ExpectFailure("log l.pxu -o x.txt", {"prismo: x.txt: ", "is the disk full?"}, kFullDisk);
  ExpectFailure("log l.pxu >/dev/full", {"standard output", "No space left"});
}

}  // namespace
}  // namespace prismo::test

// What the log command makes of the logs of real pools.
#include <chrono>
#include <filesystem>
#include <thread>
#include <vector>

#include "PrismoUtl.h"
#include "support/scoped_environment.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

void TakeSlowly(MPWork* work) {
  int32_t first_row = 0, rows = 0;
  for (int32_t first = 1; MPWorkTakeBlock(work, first, &first_row, &rows); first = 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(work->Param));
  }
}

class LogStoryTest : public ToolTest {
 protected:
  LogStoryTest() {
    std::filesystem::create_directories(Path("kit/PrismoApi/bin/x64"));
    WriteText(Path("kit/PrismoApi/bin/x64/PrismoUtl.cfg"),
              "PrismoUtl: DEBUG Size4, PATH=" + Path("logs") + "\n");
    TerminateMPThreads();
    StartMPThreads(1);
  }

  // Rows in blocks of ten, each of which takes this long.
  static uint32_t Work(uint32_t rows, uint32_t milliseconds) {
    return ExecWork1(&TakeSlowly, 0, rows - 1, nullptr, 16, rows, 1, 16, nullptr, 1, 16, milliseconds, 10, 0);
  }

  // Ends the pool and names its log.
  std::string Saved() {
    TerminateMPThreads();
    for (const auto& file : std::filesystem::directory_iterator(Path("logs"))) return file.path().string();
    return "none";
  }

 private:
  ScopedEnvironment kit_{"PRISMOSDK", Path("kit")};
};

void ExpectWords(const std::string& text, const std::vector<std::string>& words) {
  for (const std::string& word : words)
    EXPECT_NE(text.find(word), std::string::npos) << word << "\nin\n" << text;
}

TEST_F(LogStoryTest, ExplainsWhatWentWell) {
  const std::vector<uint8_t> frame(64 * 64, 7);
  std::vector<uint8_t> picture(frame.size() * 4);
  ASSERT_EQ(ByrRG8ToBGRA_MP(picture.data(), frame.data(), 64, 64), 0u);
  ASSERT_EQ(Work(30, 1), 0u);
  const std::string text = RunWell("log --explain '" + Saved() + "'");
  ExpectWords(text, {"2 works", "0 given up, 0 failed", "work 1: ByrRG8ToBGRA_MP, rows 1 to 62, from thread",
                     "work 2: ", "rows 0 to 29", ": 3 blocks, ", "  done after "});
  EXPECT_EQ(text.find("GIVEN UP"), std::string::npos) << text;
}

TEST_F(LogStoryTest, ExplainsATimeOutByASlowBlock) {
  SetMPTimeout_msec(150);
  ASSERT_EQ(Work(30, 100), UTL_STS_TIMEOUT);
  ExpectWords(RunWell("log --explain '" + Saved() + "'"),
              {"1 given up", "GIVEN UP after 15", "was still at rows 10 to 19, for ",
               "by then; 1 of 3 blocks were done"});
}

TEST_F(LogStoryTest, ExplainsATimeOutByTooFewRows) {
  SetMPTimeout_msec(50);
  const uint8_t frame[64] = {};
  uint8_t picture[256];
  ASSERT_EQ(Mono8ToBGRA_MP(picture, frame, 64, 1), UTL_STS_TIMEOUT);
  ExpectWords(
      RunWell("log --explain '" + Saved() + "'"),
      {"work 1: Mono8ToBGRA_MP", "1 rows are too few for the threads of the pool", "a block without rows"});
}

TEST_F(LogStoryTest, ExplainsATimeOutByOtherWorks) {
  MPWork* before = nullptr;
  ASSERT_EQ(StartWork(&before, &TakeSlowly, 0, 9, 0, 15, 0, 0, nullptr, 16, 10, 1, 16, nullptr, 16, 10, 1, 16,
                      400, 10, 0),
            0u);
  SetMPTimeout_msec(50);
  ASSERT_EQ(Work(10, 0), UTL_STS_TIMEOUT);
  SetMPTimeout_msec(10'000);
  ASSERT_EQ(WaitWorkDone(before), 0u);
  ExpectWords(RunWell("log --explain '" + Saved() + "'"),
              {"work 2: ", "no thread came to it in time: they were at work 1"});
}

TEST_F(LogStoryTest, ExplainsATimeOutByABlockSizeThatLeavesNoBlocks) {
  SetMPTimeout_msec(20);
  ASSERT_EQ(Work(5, 0), UTL_STS_TIMEOUT);
  ExpectWords(RunWell("log --explain '" + Saved() + "'"), {"the work had no blocks", "5 rows"});
}

TEST_F(LogStoryTest, TracesCallsAndBlocks) {
  ASSERT_EQ(Work(30, 1), 0u);
  const std::string trace = RunWell("log --trace '" + Saved() + "'");
  ExpectWords(trace,
              {"{\"displayTimeUnit\":\"ms\",\"traceEvents\":[",
               "\"name\":\"MPManager::ExecWork\",\"ph\":\"X\"", "\"name\":\"rows 0 to 9\",\"ph\":\"X\"",
               "\"name\":\"rows 20 to 29\"", "\"name\":\"worker\"", "\"name\":\"caller\"", "]}\n"});
  RunWell("log --trace '" + Saved() + "' -o trace.json");
}

TEST_F(LogStoryTest, OneViewAtATime) {
  TerminateMPThreads();
  const Outcome outcome = Run("log --trace --explain x.pxu");
  EXPECT_EQ(outcome.exit_code, 2);
  ExpectWords(outcome.err, {"--explain", "--trace"});
}

}  // namespace
}  // namespace prismo::test

#include "bench/goals.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace prismo::test {
namespace {

using bench::Result;

struct Answer {
  int missed;
  std::string text;
};

Answer GoalsOf(std::vector<Result> results, std::vector<std::string> machine = {}) {
  testing::internal::CaptureStdout();
  const int missed = bench::ReportGoals({std::move(machine), std::move(results)});
  return {missed, testing::internal::GetCapturedStdout()};
}

Result OverLimit(const std::string& name, double over_limit) {
  Result result{name};
  result.seconds = 3;
  result.over_limit = over_limit;
  result.all_seconds = {{"PrismoUtl", 3}, {"memcpy", 1}, {"NT", 3 / over_limit}, {"plain", 4}};
  return result;
}

TEST(Goals, TenPercentAboveIsAccepted) {
  const std::string row = "bilinear/RG8/BGRA/caller/1920x1080";
  EXPECT_EQ(GoalsOf({OverLimit(row, 1.31)}).missed, 0);
  const Answer missed = GoalsOf({OverLimit(row, 1.33)});
  EXPECT_EQ(missed.missed, 1);
  EXPECT_EQ(missed.text, "missed: " + row +
                             " is 1.33 x the limit, goal 1.20; 1.33 x loops that move the same bytes\n"
                             "1 of 1 rows miss their goal by more than 10 %; 0 out of reach of loops "
                             "that move the same bytes count over these\n");
}

TEST(Goals, OutOfReachOfLoopsWithTheSameBytesTheyCountOverThese) {
  const std::string row = "mono/Mono8/BGRA/caller/2448x2048";  // goal 1.07
  Result result = OverLimit(row, 1.5);
  result.seconds = 2.3;  // 1.15 of the loops, which take 1.30 x the limit
  const Answer reached = GoalsOf({result});
  EXPECT_EQ(reached.missed, 0);
  EXPECT_EQ(reached.text, "out of reach: " + row +
                              " is 1.50 x the limit, goal 1.07; 1.15 x loops that move the same bytes\n"
                              "0 of 1 rows miss their goal by more than 10 %; 1 out of reach of loops "
                              "that move the same bytes count over these\n");
  result.seconds = 2.4;  // 1.2 of the loops, 1.25 x the limit
  const Answer missed = GoalsOf({result});
  EXPECT_EQ(missed.missed, 1);
  EXPECT_NE(missed.text.find("missed: " + row), std::string::npos) << missed.text;
  EXPECT_NE(missed.text.find("1.20 x loops that move the same bytes, for which it is out of reach as well\n"),
            std::string::npos)
      << missed.text;
}

TEST(Goals, OneThatIsReachedIsNotOutOfReach) {
  Result result = OverLimit("mono/Mono8/BGRA/caller/2448x2048", 1.15);
  result.seconds = 2;  // 0.77 of the loops, which take 1.5 x the limit
  const Answer answer = GoalsOf({result});
  EXPECT_EQ(answer.missed, 0);
  EXPECT_EQ(answer.text.find("out of reach: "), std::string::npos) << answer.text;
}

TEST(Goals, LoopsThatReachAGoalLeaveItAsItIs) {
  Result result = OverLimit("mono/Mono8/BGRA/caller/2448x2048", 1.2);
  result.seconds = 2.6;  // 1.04 of the loops, which take 1.15 x the limit
  EXPECT_EQ(GoalsOf({result}).missed, 1);
}

TEST(Goals, EachSizeHasItsOwn) {
  EXPECT_EQ(GoalsOf({OverLimit("bilinear/RG8/BGRA/caller/2448x2048", 1.4)}).missed, 0);
  EXPECT_EQ(GoalsOf({OverLimit("bilinear/RG8/BGRA/caller/4096x3000", 1.2)}).missed, 1);
}

TEST(Goals, TheWorstOfSeveralRunsCounts) {
  const std::string row = "mirror/RGB8/both/caller/4096x3000";
  const Answer answer = GoalsOf({OverLimit(row, 1.0), OverLimit(row, 1.5), OverLimit(row, 1.1)});
  EXPECT_EQ(answer.missed, 1);
  EXPECT_NE(answer.text.find("1.50 x the limit"), std::string::npos) << answer.text;
}

TEST(Goals, Avx2HasLowerOnes) {
  const std::vector<std::string> machine = {
      "processor: any", "instruction set: at most avx2 (PRISMO_SIMD), the limits use avx512"};
  EXPECT_EQ(GoalsOf({OverLimit("yuv/YUV444/BGRA/caller/1920x1080", 3.5)}, machine).missed, 0);
  EXPECT_EQ(GoalsOf({OverLimit("yuv/YUV444/BGRA/caller/1920x1080", 3.6)}, machine).missed, 1);
  EXPECT_EQ(GoalsOf({OverLimit("yuv/YUV444/BGRA/caller/2448x2048", 9)}, machine).missed, 0);
  EXPECT_EQ(GoalsOf({OverLimit("yuv/YUV444/BGRA/caller/1920x1080", 3.5)},
                    {"instruction set: the processor's best, avx2"})
                .missed,
            0);
  EXPECT_EQ(GoalsOf({OverLimit("yuv/YUV444/BGRA/caller/1920x1080", 3.5)},
                    {"instruction set: the processor's best, avx512vbmi"})
                .missed,
            1);
}

TEST(Goals, OtherInstructionSetsHaveNone) {
  EXPECT_EQ(GoalsOf({OverLimit("yuv/YUV444/BGRA/caller/1920x1080", 9)},
                    {"instruction set: at most sse4 (PRISMO_SIMD), the limits use avx512vbmi"})
                .text,
            "0 of 0 rows miss their goal by more than 10 %; 0 out of reach of loops that move the "
            "same bytes count over these\n");
}

TEST(Goals, ReadFromAFile) {
  const std::string path = testing::TempDir() + "goals.json";
  bench::WriteJson({{"instruction set: the processor's best, avx512"},
                    {OverLimit("bilinear/RG8/BGRA/caller/1920x1080", 1.33)}},
                   path);
  testing::internal::CaptureStdout();
  EXPECT_EQ(bench::ReportGoals(bench::ReadJson(path)), 1);
  EXPECT_NE(testing::internal::GetCapturedStdout().find("; 1.33 x loops that move the same bytes\n"),
            std::string::npos);
}

TEST(Goals, PoolsAreComparedWithTheCallersThread) {
  Result pool{"adaptive/RG8/BGR/pool2/1920x1080"};
  pool.faster_than_caller = 1.6;
  EXPECT_EQ(GoalsOf({pool}).missed, 0);
  pool.faster_than_caller = 1.5;
  const Answer missed = GoalsOf({pool});
  EXPECT_EQ(missed.missed, 1);
  EXPECT_NE(missed.text.find("is 1.50 times as fast as the caller's thread, goal 1.70\n"), std::string::npos)
      << missed.text;
}

TEST(Goals, OtherRowsHaveNone) {
  const Answer answer = GoalsOf(
      {OverLimit("engine/rows/none/pool2/1920x1080", 9), OverLimit("mono/Mono8/BGRA/caller/64x64", 9)});
  EXPECT_EQ(answer.missed, 0);
  EXPECT_EQ(answer.text,
            "0 of 0 rows miss their goal by more than 10 %; 0 out of reach of loops that move the "
            "same bytes count over these\n");
}

}  // namespace
}  // namespace prismo::test

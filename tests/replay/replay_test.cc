// What the fuzzers start from and what they have found, as it is and damaged, with any compiler.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "fuzz/config_file_fuzz.h"
#include "fuzz/conversion_fuzz.h"
#include "fuzz/log_text_fuzz.h"
#include "fuzz/raw_frame_fuzz.h"
#include "fuzz/results_fuzz.h"
#include "fuzz/seeds.h"
#include "fuzz/tool_files_fuzz.h"
#include "fuzz/tool_options_fuzz.h"
#include "fuzz/tool_pictures_fuzz.h"
#include "support/generators.h"

namespace prismo::test {
namespace {

using Target = void (*)(const uint8_t* data, size_t size);

const std::map<std::string, Target> kTargets = {
    {"config_file", FuzzConfigFile},   {"conversion", FuzzConversion::Run},
    {"log_text", FuzzLogText},         {"raw_frame", FuzzRawFrame},
    {"results", FuzzResults},          {"tool_files", FuzzToolFiles},
    {"tool_options", FuzzToolOptions}, {"tool_pictures", FuzzToolPictures},
};

class Replay : public testing::TestWithParam<std::string> {
 protected:
  // The reference of the conversions splits frames for a pool of one thread.
  Replay() {
    RecordProperty("seed", std::to_string(Seed()));
    TerminateMPThreads();
    StartMPThreads(1);
    SetMPTimeout_msec(60'000);
  }
  ~Replay() override { TerminateMPThreads(); }

  static void Run(const Bytes& input) { kTargets.at(GetParam())(input.data(), input.size()); }

  const std::vector<Bytes> seeds_ = FuzzSeeds().at(GetParam());
};

TEST_P(Replay, EverySeed) {
  for (const Bytes& seed : seeds_) Run(seed);
}

// A byte that has changed, an end that is missing: what a fuzzer does, for about a second.
TEST_P(Replay, DamagedSeeds) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
  for (int round = 0; round < 100; ++round) {
    for (Bytes input : seeds_) {
      if (std::chrono::steady_clock::now() > end) return;
      if (input.size() > 4096) continue;
      for (uint32_t changes = random.Below(4); changes > 0 && !input.empty(); --changes) {
        input[random.Below(static_cast<uint32_t>(input.size()))] = random.Byte();
      }
      if (random.Below(3) == 0) input.resize(random.Below(static_cast<uint32_t>(input.size()) + 1));
      Run(input);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Targets, Replay, testing::ValuesIn([] {
                           std::vector<std::string> names;
                           for (const auto& [name, target] : kTargets) names.push_back(name);
                           return names;
                         }()),
                         [](const auto& target) { return target.param; });

TEST(ReplayOfAll, EveryFuzzerHasSeedsAndIsReplayed) {
  std::set<std::string> fuzzers, seeded, replayed;
  for (const auto& file : std::filesystem::directory_iterator(PRISMO_FUZZ_FOLDER)) {
    const std::string name = file.path().filename().string();
    if (name.ends_with("_fuzz.cc")) fuzzers.insert(name.substr(0, name.size() - 8));
  }
  const auto all_seeds = FuzzSeeds();
  for (const auto& [name, seeds] : all_seeds) seeded.insert(name);
  for (const auto& [name, target] : kTargets) replayed.insert(name);
  EXPECT_EQ(fuzzers, seeded);
  EXPECT_EQ(fuzzers, replayed);
}

TEST(ReplayOfAll, SeedsReachEveryConversion) {
  std::set<std::string> reached;
  const std::vector<Bytes> seeds = FuzzSeeds().at("conversion");
  for (const Bytes& seed : seeds) reached.insert(FuzzConversion::NameIn(seed));
  const std::vector<std::string> all = FuzzConversion::Names();
  EXPECT_EQ(reached, (std::set<std::string>(all.begin(), all.end())));
}

// Else the seeds would test little more than the complaints about them.
TEST(ReplayOfAll, SeedsThatAreWellFormedAreRead) {
  const TempFolder folder;
  size_t pictures = 0;
  const std::vector<Bytes> seeds = FuzzSeeds().at("tool_pictures");
  for (const Bytes& seed : seeds) {
    WriteFile(folder / "picture", seed);
    try {
      tool::ReadPicture(folder / "picture");
      ++pictures;
    } catch (const tool::Error&) {
    }
  }
  EXPECT_EQ(pictures, 14u);
  const ToolOptionsFolder files;
  const auto run = [](std::vector<const char*> words) {
    words.insert(words.begin(), "prismo");
    return tool::Run(static_cast<int>(words.size()), words.data());
  };
  const std::map<std::string, Bytes> inputs = ToolInputs();
  for (const auto& [name, content] : inputs) {
    if (name.ends_with(".rwh")) {
      EXPECT_EQ(run({"info", name.c_str()}), 0);
    }
  }
  EXPECT_EQ(run({"info", "m.raw", "--size", "4x4", "--format", "Mono8"}), 0);
  EXPECT_EQ(run({"compare", "p.bmp", "p.png"}), 0);
  EXPECT_EQ(run({"log", "l.pxu", "--explain"}), 0);
}

}  // namespace
}  // namespace prismo::test

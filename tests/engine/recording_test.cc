// What the engine records of itself, read as a person would: in the text of the log that a pool leaves.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "PrismoUtl.h"
#include "engine/fresh_pool.h"
#include "engine/pool_tools.h"
#include "mp/work.h"
#include "platform/process.h"
#include "support/scoped_environment.h"
#include "support/temp_folder.h"

namespace prismo::mp {
namespace {

enum LogLevels : uint32_t { kDebugUp, kInfoUp, kWarningsUp, kErrorsUp };

using Lines = std::vector<std::string>;

// The messages of a pool with one thread, from its first record to its last.
struct Messages {
  Lines of_callers;
  Lines of_worker;
  int destroyed_works = 0;  // by the submitter or the worker, whoever is the last to let go
};

const std::vector<std::pair<std::regex, std::string>> kVarying = {
    {std::regex("(Callback|m_PCurrentWork):[ 0-9a-f]{8}"), "$1:@"},
    {std::regex("ID of CurrentWork:[0-9]+|CurrentWork is none"), "@"},
};

class RecordingFromTheStart : public FreshPool {
 protected:
  RecordingFromTheStart() {
    const std::string kit = folder_ / "kit/PrismoApi/bin/x64";
    std::filesystem::create_directories(kit);
    test::WriteText(kit + "/PrismoUtl.cfg", "PrismoUtl: DEBUG Size4, PATH=" + (folder_ / "logs") + "\n");
  }

  // Ends the pool and reads its log. Numbers that differ from run to run are replaced by what they are.
  Messages EndOfLog(uint32_t level = kDebugUp) {
    SetMPLogTerminationLog(1);
    TerminateMPThreads();
    Messages messages;
    for (const auto& saved : std::filesystem::directory_iterator(folder_ / "logs")) {
      const std::string text = folder_ / "log.txt";
      EXPECT_EQ(ConvLogPXU(saved.path().string().c_str(), text.c_str(), level), UTL_STS_SUCCESS);
      std::istringstream lines(test::ReadText(text));
      const std::regex record(R"(^\d+ ThreadID:([0-9a-f]+) (WorkID:.*)$)");
      for (std::string line; std::getline(lines, line);) {
        std::smatch parts;
        if (!std::regex_match(line, parts, record)) continue;
        std::string message = parts[2];
        for (const auto& [varying, name] : kVarying) message = std::regex_replace(message, varying, name);
        if (message.ends_with("MPWork                       Terminated.")) {
          ++messages.destroyed_works;
          continue;
        }
        const bool own = std::stoul(parts[1], nullptr, 16) == platform::ThreadId();
        (own ? messages.of_callers : messages.of_worker).push_back(message);
      }
    }
    return messages;
  }

 private:
  test::TempFolder folder_;
  test::ScopedEnvironment kit_{"PRISMOSDK", folder_ / "kit"};
};

class Recording : public RecordingFromTheStart {
 protected:
  Recording() { StartMPThreads(1); }
};

// Those that are about the work.
Lines Of(const std::string& work, const Lines& messages) {
  Lines own;
  for (const std::string& message : messages) {
    if (message.starts_with("WorkID:" + work)) own.push_back(message.substr(("WorkID:" + work + " ").size()));
  }
  return own;
}

Lines Joined(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

const Lines kQueued = {
    "MPManager::AppendWork        Started.                     Callback:@, FirstY:   0, LastY:   9.",
    "MPManager::AppendWork        Registered MPWork.           Callback:@, FirstY:   0, LastY:   9, "
    "WorkToDo:2.",
    "MPManager::AppendWork        Finished.                    Callback:@, FirstY:   0, LastY:   9, "
    "WorkToDo:2.",
};

const Lines kJoined = {
    "MPManager::ExecFunc          Started. m_PCurrentWork:@, m_aoWork.size():1.",
    "MPWork::TryAccess            Started. Access counter:0.",
    "MPWork::TryAccess            Access allowed(1), access counter:1.",
    "MPManager::ExecFunc          Got work.",
};

Lines LetGo(int blocks_left) {
  return {
      "MPManager::ReleaseWork       Started.                     Callback:@, FirstY:   0, LastY:   9.",
      "MPManager::RemoveWork        Started.                     Callback:@, FirstY:   0, LastY:   9.",
      "MPManager::RemoveWork        Finished.                    Callback:@, FirstY:   0, LastY:   9, "
      "WorkToDo:" +
          std::to_string(blocks_left) + ".",
      "MPManager::ReleaseWork       Releases MPWork.             Callback:@.",
  };
}

const Lines kTwoBlocksTaken = {
    "MPWork::GetWorkLog           Started (1). WorkToDo:2, access counter:1.",
    "MPWork::GetWorkLog           Finished acquiring work block. Start:0, len:5, WorkToDo:2, access "
    "counter:1.",
    "MPWork::GetWorkLog           Re-started with previous work report(0). WorkToDo:2, access counter:1.",
    "MPWork::GetWorkLog           Finished acquiring work block. Start:5, len:5, WorkToDo:1, access "
    "counter:1.",
    "MPWork::GetWorkLog           Re-started with previous work report(0). WorkToDo:1, access counter:1.",
    "MPWork::GetWorkLog           Raised 'Done' event. WorkToDo:0, access counter:0.",
    "MPWork::GetWorkLog           Finished (Work already done). Start:0, len:0, WorkToDo:0, access "
    "counter:0.",
};

// Which work comes next depends on whether the submitter has already removed this one.
const Lines kLeft = {"MPManager::UpdateCurrentWork Started. ID of finished work:1, @."};

// Ten rows in two blocks.
uint32_t Exec(const Body& body) {
  return ExecWork1(&CallBody, 0, 9, nullptr, 16, 10, 1, 16, const_cast<Body*>(&body), 1, 16, 0, 5, 0);
}

MPWork* Start(const Body& body) {
  MPWork* work = nullptr;
  StartWork(&work, &CallBody, 0, 9, 0, 15, 0, 0, nullptr, 16, 10, 1, 16, const_cast<Body*>(&body), 16, 10, 1,
            16, 0, 5, 0);
  return work;
}

TEST_F(Recording, AWorkOfAnApplication) {
  ASSERT_EQ(Exec(kDrain), 0u);
  const Messages log = EndOfLog();
  EXPECT_EQ(
      Of("0001", log.of_callers),
      Joined(
          {{"MPWork                       Instance created.",
            "MPManager::ExecWork          Type 0 started.              Callback:@, FirstY:   0, LastY:   9."},
           kQueued,
           {"MPManager::ExecWork          Type 0. Registered MPWork.   Callback:@, FirstY:   0, LastY:   9."},
           LetGo(0),
           {"MPManager::ExecWork          Type 0 finished in success.  Callback:@, FirstY:   0, LastY:   9, "
            "status:00000000."}}));
  EXPECT_EQ(Of("0001", log.of_worker), Joined({kJoined, kTwoBlocksTaken, kLeft}));
}

TEST_F(Recording, AWorkThatIsStartedAndWaitedFor) {
  ASSERT_EQ(WaitWorkDone(Start(kDrain)), 0u);
  const Messages log = EndOfLog();
  EXPECT_EQ(
      Of("0001", log.of_callers),
      Joined(
          {{"MPWork                       Instance created.",
            "MPManager::StartWork         Type 0 started.              Callback:@, FirstY:   0, LastY:   9."},
           kQueued,
           {"MPManager::StartWork         Type 0 finished in success.  Callback:@, FirstY:   0, LastY:   9, "
            "status:00000000.",
            "MPManager::WaitWorkDone      Type 0 started.              Callback:@, FirstY:   0, LastY:   9."},
           LetGo(0),
           {"MPManager::WaitWorkDone      Type 0 finished in success. Status:00000000."}}));
  EXPECT_EQ(Of("0001", log.of_worker), Joined({kJoined, kTwoBlocksTaken, kLeft}));
}

TEST_F(Recording, ACallbackThatThrows) {
  ASSERT_EQ(Exec([](MPWork* work) {
              ForEachBlock(work, [](int32_t, int32_t) { throw std::runtime_error("no"); });
            }),
            UTL_STS_FAILURE);
  const Messages log = EndOfLog();
  EXPECT_EQ(log.destroyed_works, 1);
  EXPECT_EQ(Of("0001", log.of_worker),
            Joined({kJoined,
                    {kTwoBlocksTaken[0], kTwoBlocksTaken[1],
                     "MPWork::SetStatus            Called. Status:ffffffff.",
                     "MPWork::GetWork              Raised 'Done' event. WorkToDo:2, access counter:0."},
                    kLeft}));
  const Lines calls = Of("0001", log.of_callers);
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.back(),
            "MPManager::ExecWork          Type 0 finished in failure.  Callback:@, FirstY:   0, LastY:   9, "
            "status:ffffffff.");
}

TEST_F(Recording, AWorkThatIsGivenUp) {
  SetMPTimeout_msec(200);  // long enough for the worker to come
  Gate given_up;
  const Body late = [&](MPWork* work) { ForEachBlock(work, [&](int32_t, int32_t) { given_up.Pass(); }); };
  ASSERT_EQ(Exec(late), UTL_STS_TIMEOUT);
  given_up.Open();
  ASSERT_TRUE(Eventually([] { return Work::Live() == 0; }));
  const Messages log = EndOfLog();
  EXPECT_EQ(
      Of("0001", log.of_callers),
      Joined(
          {{"MPWork                       Instance created.",
            "MPManager::ExecWork          Type 0 started.              Callback:@, FirstY:   0, LastY:   9."},
           kQueued,
           {"MPManager::ExecWork          Type 0. Registered MPWork.   Callback:@, FirstY:   0, LastY:   9.",
            "MPWork::SetStatus            Called. Status:00000012.",
            "MPManager::ExecWork          Type 0. MPWork time out.     Callback:@, FirstY:   0, LastY:   9."},
           {LetGo(2)[0], LetGo(2)[1], LetGo(2)[2],
            "MPManager::ReleaseWork       1 threads are accessing. Registers MPWork to timeout list. "
            "Callback:@.",
            "MPManager::ExecWork          Type 0 finished in failure.  Callback:@, FirstY:   0, LastY:   9, "
            "status:00000012."}}));
  EXPECT_EQ(
      Of("0001", log.of_worker),
      Joined(
          {kJoined,
           {kTwoBlocksTaken[0], kTwoBlocksTaken[1],
            "MPWork::GetWorkLog           Re-started with previous work report(0). WorkToDo:2, access "
            "counter:1.",
            "MPWork::GetWorkLog           Raised 'Done' event. WorkToDo:1, access counter:0.",
            "MPWork::GetWorkLog           Finished (Work already done). Start:0, len:0, WorkToDo:1, access "
            "counter:0.",
            "MPManager::ExecFunc          Timeout error(00000012).", kLeft[0],
            "MPManager::ExecFunc          Releases timeout MPWork."}}));
}

TEST_F(Recording, AConversion) {
  const std::vector<uint8_t> frame(64 * 10, 7);
  std::vector<uint8_t> picture(frame.size() * 4);
  ASSERT_EQ(Mono8ToBGRA_MP(picture.data(), frame.data(), 64, 10), 0u);
  ASSERT_EQ(Mono8ToBGRA_MP(picture.data(), frame.data(), 0, 10), 0u);
  const Messages log = EndOfLog();
  EXPECT_EQ(
      Of("0001", log.of_worker),
      Joined({kJoined,
              {
                  "Mono8ToBGRA_WK               Started. WidthS:64, HeightS:10.",
                  "MPWork::GetWork              Started (1). WorkToDo:2, access counter:1.",
                  "MPWork::GetWork              Finished acquiring work block. Start:0, len:8, WorkToDo:2, "
                  "access counter:1.",
                  "Mono8ToBGRA_WK               Got row range to calculate. Start:0, len:8",
                  "Mono8ToBGRA_WK               Calculated row range. Start:0, len:8",
                  "MPWork::GetWork              Re-started with previous work report(0). WorkToDo:2, access "
                  "counter:1.",
                  "MPWork::GetWork              Finished acquiring work block. Start:8, len:2, WorkToDo:1, "
                  "access counter:1.",
                  "Mono8ToBGRA_WK               Got row range to calculate. Start:8, len:2",
                  "Mono8ToBGRA_WK               Calculated row range. Start:8, len:2",
                  "MPWork::GetWork              Re-started with previous work report(0). WorkToDo:1, access "
                  "counter:1.",
                  "MPWork::GetWork              Raised 'Done' event. WorkToDo:0, access counter:0.",
                  "MPWork::GetWork              Finished (Work already done). Start:0, len:0, WorkToDo:0, "
                  "access counter:0.",
              },
              kLeft}));
  Lines conversions;
  for (const std::string& message : Of("0000", log.of_callers)) {
    if (message.starts_with("Mono8")) conversions.push_back(message);
  }
  EXPECT_EQ(conversions,
            (Lines{"Mono8ToBGRA_MP               Started.",
                   "Mono8ToBGRA_MP               Skipped due to zero target size. Width:0, Height:10."}));
}

// Nothing of the first conversion is missing, although there is no log before it.
TEST_F(RecordingFromTheStart, AConversionThatMakesThePool) {
  const std::vector<uint8_t> frame(64 * 64, 7);
  std::vector<uint8_t> picture(frame.size() * 4);
  ASSERT_EQ(ByrGR8ToBGRA_MP(picture.data(), frame.data(), 64, 64), 0u);
  Lines conversions;
  for (const std::string& message : Of("0000", EndOfLog().of_callers)) {
    if (message.starts_with("Byr")) conversions.push_back(message);
  }
  EXPECT_EQ(conversions,
            (Lines{"ByrGR8ToBGRA_MP              Started.",
                   "ByrGR8ToBGRA_MP              Finished calculating top and bottom rows. Starts middle row "
                   "calculation.('Finished' log will not be written.)"}));
}

TEST_F(Recording, TheLifeOfAPool) {
  SetMPThreadPriority(-1);
  GetMPThreadPriority();
  GetMPCount();
  EXPECT_EQ(Exec(kDrain), 0u);  // after which the thread has seen its priority
  const Messages log = EndOfLog();
  EXPECT_EQ(Of("0000", log.of_callers),
            (Lines{"MPManager                    Instance created.",
                   "MPManager::SetThreadCount    Started. Argument:1, thread count:1, current threads:0.",
                   "MPManager::SetThreadCount    Finished. Argument:1, thread count:1, current threads:1.",
                   "MPManager::SetThreadPriority Started. Priority: 0 -> -1.",
                   "MPManager::SetThreadPriority Finished. Priority:-1.",
                   "MPManager::GetThreadPriority Called. Returns -1.",
                   "MPManager::GetThreadCount    Called. Returns 1, current threads:1.",
                   "MPManager                    Terminater started.",
                   "MPManager::CloseAllThreads   Started. Thread count:1, current threads:1.",
                   "MPManager::CloseAllThreads   Finished. Thread count:0, current threads:0."}));
  Lines thread = Of("0000", log.of_worker);
  std::erase_if(thread, [](const std::string& line) { return !line.starts_with("MPManager::ThreadExec"); });
  EXPECT_EQ(thread, (Lines{"MPManager::ThreadExec        Started.",
                           "MPManager::ThreadExec        Changed Thread priority 0 -> -1. ",
                           "MPManager::ThreadExec        Finished."}));
}

TEST_F(Recording, LevelsLeaveOutWhatIsBelowThem) {
  SetMPTimeout_msec(5);
  ASSERT_EQ(Exec([](MPWork*) {}), UTL_STS_TIMEOUT);
  SetMPLogLevel(kErrorsUp);
  SetMPTimeout_msec(20'000);
  EXPECT_EQ(Exec(kDrain), 0u);
  const Messages log = EndOfLog(kInfoUp);
  for (const Lines& lines : {log.of_callers, log.of_worker}) {
    for (const std::string& line : lines) {
      EXPECT_EQ(line.find("GetWork"), std::string::npos) << line;
      EXPECT_EQ(line.find("TryAccess"), std::string::npos) << line;
      EXPECT_FALSE(line.starts_with("WorkID:0002")) << "recorded below the level in force: " << line;
    }
  }
  EXPECT_FALSE(Of("0001", log.of_callers).empty());
}

}  // namespace
}  // namespace prismo::mp

// What becomes of files that are there before a command runs, and of those that an interrupt finds half done.
#include <sys/stat.h>
#include <unistd.h>

#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

namespace fs = std::filesystem;

class OutputTest : public ToolTest {
 protected:
  mode_t ModeOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(stat(Path(name).c_str(), &status), 0) << name;
    return status.st_mode & 0777;
  }

  // The start of a command line whose files have their permissions checked, also for the superuser.
  static std::string AsOrdinaryUser() {
    return geteuid() == 0 ? "setpriv --bounding-set=-all --inh-caps=-all" : "";
  }

  size_t ScratchFilesIn(const std::string& name) const {
    size_t count = 0;
    for (const auto& entry : fs::directory_iterator(Path(name))) {
      count += entry.path().filename().string().starts_with(".prismo-");
    }
    return count;
  }
};

TEST_F(OutputTest, AnInputIsNotReplaced) {
  MakeFrame("f", PRISMO_BAYER_RG8, 64, 64);
  const Bytes before = Content("f.rwh");
  for (const char* output : {"f.rwh", "./f.rwh", "link.rwh", "hard.rwh"}) {
    fs::create_symlink("f.rwh", Path("link.rwh"));
    fs::create_hard_link(Path("f.rwh"), Path("hard.rwh"));
    ExpectFailure(std::string("mirror f.rwh --vertical -o ") + output, {output, "is an input"});
    EXPECT_EQ(Content("f.rwh"), before) << output;
    fs::remove(Path("link.rwh"));
    fs::remove(Path("hard.rwh"));
  }
}

TEST_F(OutputTest, AnInputIsNotReplacedByAPlane) {
  const Bytes dump(64, 7);
  for (const char* colour : {"blue", "green", "red"}) {
    const std::string name = std::string("p_") + colour + ".grey";
    WriteFile(Path(name), dump);
    ExpectFailure("convert " + name + " --size 8x8 --format BayerRG8 --planes -o p.grey",
                  {name, "is an input"});
    EXPECT_EQ(Content(name), dump);
    fs::remove(Path(name));
  }
}

TEST_F(OutputTest, AnInputIsNotReplacedByAPlaneOfAnotherInput) {
  const Bytes dump(64, 7);
  WriteFile(Path("a.raw"), dump);
  WriteFile(Path("a_red.grey"), dump);
  const Outcome outcome =
      Run("convert a.raw a_red.grey --size 8x8 --format BayerRG8 --planes --as grey -o . --threads 1");
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_NE(outcome.err.find("a_red.grey: is an input"), std::string::npos) << outcome.err;
  EXPECT_EQ(Content("a_red.grey"), dump);
  EXPECT_FALSE(fs::exists(Path("a_blue.grey")));
  EXPECT_TRUE(fs::exists(Path("a_red_blue.grey")));
}

TEST_F(OutputTest, PlanesAreWrittenTogetherOrNotAtAll) {
  MakeFrame("f", PRISMO_BAYER_RG8, 8, 8);
  fs::create_directory(Path("p_green.bmp"));
  ExpectFailure("convert f.rwh -o p.bmp --planes", {"p_green.bmp", "is a folder"});
}

TEST_F(OutputTest, AReplacedFileKeepsItsMode) {
  MakeFrame("f", PRISMO_MONO8, 8, 8);
  for (const mode_t mode : {0600, 0644, 0666, 0755, 0200}) {
    WriteText(Path("x.bmp"), "old");
    ASSERT_EQ(chmod(Path("x.bmp").c_str(), mode), 0);
    RunWell("convert f.rwh -o x.bmp");
    EXPECT_EQ(ModeOf("x.bmp"), mode);
    fs::remove(Path("x.bmp"));
  }
  EXPECT_EQ(Run("convert f.rwh -o new.bmp", "umask 027;").exit_code, 0);
  EXPECT_EQ(ModeOf("new.bmp"), 0640u);
}

TEST_F(OutputTest, AFileThatMayNotBeWrittenStays) {
  if (std::system((AsOrdinaryUser() + " true").c_str()) != 0) GTEST_SKIP() << "permissions do not bind us";
  MakeFrame("f", PRISMO_MONO8, 8, 8);
  WriteText(Path("x.bmp"), "precious");
  ASSERT_EQ(chmod(Path("x.bmp").c_str(), 0444), 0);
  ExpectFailure("convert f.rwh -o x.bmp", {"prismo: x.bmp: cannot be written to: Permission denied"},
                AsOrdinaryUser());
  EXPECT_EQ(ReadText(Path("x.bmp")), "precious");
  fs::create_directory(Path("closed"));
  ASSERT_EQ(chmod(Path("closed").c_str(), 0555), 0);
  ExpectFailure("convert f.rwh -o closed/x.bmp", {"prismo: closed/x.bmp: ", "Permission denied"},
                AsOrdinaryUser());
}

// The tool waits for a reader of the pipe when the signals come.
TEST_F(OutputTest, SignalsThatAreIgnoredStayIgnored) {
  MakeFrame("f", PRISMO_MONO8, 4, 4);
  for (const char* signal : {"INT", "TERM", "HUP"}) {
    const Outcome outcome = Run(std::string("convert f.rwh --as grey -o pipe & sleep 0.3; kill -") + signal +
                                    " $!; sleep 0.1; timeout 10 cat pipe >got; wait $!",
                                std::string("rm -f pipe; mkfifo pipe; trap '' ") + signal + ";");
    EXPECT_EQ(outcome.exit_code, 0) << signal << outcome.err;
    EXPECT_EQ(Content("got").size(), 16u) << signal;
  }
}

// A batch is interrupted at many moments; whatever its threads are at, they leave no temporary file.
TEST_F(OutputTest, InterruptedBatchLeavesNoTemporaryFiles) {
  for (int i = 0; i < 100; ++i) MakeFrame("f" + std::to_string(i), PRISMO_MONO8, 64, 64);
  fs::create_directory(Path("out"));
  for (int run = 0; run < 25; ++run) {
    const std::string delay = "0.0" + std::to_string(10 + 2 * run);
    const Outcome outcome = Run("convert f*.rwh -o out/ --threads 16", "timeout -s TERM " + delay);
    EXPECT_TRUE(outcome.exit_code == 124 || outcome.exit_code == 0) << outcome.err;
    ASSERT_EQ(ScratchFilesIn("out"), 0u) << "after " << delay << " s";
  }
}

TEST_F(OutputTest, AFailedCommandLeavesNoFolder) {
  MakeFrame("odd", PRISMO_BAYER_RG8, 5, 5);
  MakeFrame("f", PRISMO_MONO8, 4, 4);
  ExpectFailure("demo none.rwh -o new", {"none.rwh", "no such file"});
  ExpectFailure("demo f.rwh -o new/er --format nonsense", {"nonsense"});
  ExpectFailure("demo odd.rwh -o new/er", {"multiple of 2"});
  ExpectFailure("demo -o new --gain x", {"--gain"});
  ExpectFailure("demo -o f.rwh", {"f.rwh", "is not a folder"});
  ExpectFailure("convert odd.rwh none.rwh -o new --as nonsense", {"nonsense"});
  const Outcome outcome = Run("convert odd.rwh none.rwh -o new/er/");
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_FALSE(fs::exists(Path("new")));
  fs::create_directory(Path("empty"));
  Run("convert none.rwh -o empty/er/");
  EXPECT_TRUE(fs::is_empty(Path("empty")));
}

}  // namespace
}  // namespace prismo::test

// An application of the library's, in a folder of its own whose name has a space in it.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/scoped_environment.h"
#include "support/temp_folder.h"
#include "windows/process.h"

namespace prismo::test {
namespace {

class Guest : public testing::Test {
 protected:
  Guest() {
    std::filesystem::create_directories(home_);
    for (const char* file : {"PrismoUtl64.dll", "guest.exe"}) {
      std::filesystem::copy_file(ProgramFolder() + '\\' + file, home_ + '\\' + file);
    }
  }

  DWORD RunGuest(const std::string& arguments) const { return RunProgram(home_ + "\\guest.exe", arguments); }

  std::string MakeFolder(const std::string& path) const {
    std::filesystem::create_directories(folder_ / path);
    return folder_ / path;
  }

  static ptrdiff_t FilesIn(const std::string& folder) {
    const std::filesystem::directory_iterator files(folder);
    return std::distance(begin(files), end(files));
  }

  const TempFolder folder_;
  const std::string home_ = folder_ / "an application";
  const ScopedEnvironment kit_{"PRISMOSDK", std::nullopt};
};

TEST_F(Guest, ConvertsAndSavesPictures) {
  const std::string pictures = MakeFolder("my pictures");
  ASSERT_EQ(RunGuest("convert \"" + pictures + '"'), 0u);
  for (const char* name : {"\\a picture.jpg", "\\a raw frame.jpg"}) {
    const Bytes jpeg = ReadFile(pictures + name);
    ASSERT_GT(jpeg.size(), 200u);
    EXPECT_EQ(LittleEndian(jpeg, 0, 2), 0xD8FFu);
    EXPECT_EQ(LittleEndian(jpeg, jpeg.size() - 2, 2), 0xD9FFu);
  }
  EXPECT_EQ(FilesIn(pictures), 3);
}

TEST_F(Guest, WithoutConfigurationNoLogIsSaved) {
  const ptrdiff_t files = FilesIn(home_);
  ASSERT_EQ(RunGuest("use-pool"), 0u);
  EXPECT_EQ(FilesIn(home_), files);
}

TEST_F(Guest, TheFileBesideTheProgramIsRead) {
  const std::string logs = MakeFolder("the logs");
  WriteText(home_ + "\\PrismoUtl.cfg", "PrismoUtl: INFO PATH=\"" + logs + "\"\n");
  ASSERT_EQ(RunGuest("use-pool"), 0u);
  EXPECT_EQ(FilesIn(logs), 1) << "the end of the process destroys the pool, which saves its log";
}

TEST_F(Guest, TheFileOfTheKitIsRead) {
  const std::string logs = MakeFolder("kit logs");
  WriteText(MakeFolder("the kit/PrismoApi/bin/x64") + "\\PrismoUtl.cfg",
            "PrismoUtl: INFO PATH=\"" + logs + "\"\n");
  const ScopedEnvironment kit("PRISMOSDK", (folder_ / "the kit") + "\\");
  ASSERT_EQ(RunGuest("use-pool"), 0u);
  EXPECT_EQ(FilesIn(logs), 1);
}

TEST_F(Guest, ExitsWithWorkPending) {
  for (int i = 0; i < 5; ++i) ASSERT_EQ(RunGuest("exit-with-work"), 0u);
}

TEST_F(Guest, ExitsWithWorkPendingAndALogToSave) {
  const std::string logs = MakeFolder("logs");
  WriteText(home_ + "\\PrismoUtl.cfg", "PrismoUtl: DEBUG PATH=" + logs + "\n");
  ASSERT_EQ(RunGuest("exit-with-work"), 0u);
  EXPECT_EQ(FilesIn(logs), 1);
}

}  // namespace
}  // namespace prismo::test

// What the configuration file's line says, and which file it is.
#include "mp/config_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <sstream>
#include <string>

#include "fuzz/config_file_fuzz.h"
#include "platform/folders.h"
#include "platform/module_path.h"
#include "support/scoped_environment.h"
#include "support/temp_folder.h"

namespace prismo::mp {

bool operator==(const LogConfiguration& a, const LogConfiguration& b) {
  return a.folder == b.folder && a.save_on_error == b.save_on_error &&
         a.termination_log == b.termination_log && a.level == b.level && a.records == b.records;
}

std::ostream& operator<<(std::ostream& out, const LogConfiguration& c) {
  return out << "folder '" << c.folder << "' save " << c.save_on_error << " termination " << c.termination_log
             << " level " << c.level << " records " << c.records;
}

namespace {

using test::ScopedEnvironment;
using test::TempFolder;
using test::WriteText;

const std::string kSlash(1, platform::kSeparator);

LogConfiguration Read(const std::string& text) {
  LogConfiguration configuration{.folder = "default" + kSlash};
  std::istringstream file(text);
  const bool names_folder = ReadConfiguration(file, configuration);
  EXPECT_EQ(names_folder, configuration.folder != "default" + kSlash) << text;
  return configuration;
}

// A file without any effect.
LogConfiguration Untouched() { return {.folder = "default" + kSlash}; }

// After a line that only names the library.
LogConfiguration Named() { return {.folder = "default" + kSlash, .termination_log = true}; }

LogConfiguration NamedWithLevel(uint32_t level) {
  LogConfiguration configuration = Named();
  configuration.level = level;
  return configuration;
}

LogConfiguration NamedWithRecords(uint32_t records) {
  LogConfiguration configuration = Named();
  configuration.records = records;
  return configuration;
}

LogConfiguration NamedWithFolder(const std::string& folder) {
  LogConfiguration configuration = Named();
  configuration.folder = folder;
  return configuration;
}

TEST(ConfigFile, WithoutALineThatNamesTheLibraryNothingChanges) {
  EXPECT_EQ(Read(""), Untouched());
  EXPECT_EQ(Read("\n\n\n"), Untouched());
  EXPECT_EQ(Read("OtherModule: SaveOnError FATAL Size9, PATH=/x\n"), Untouched());
  EXPECT_EQ(Read("prismoutl: WARN\nPRISMOUTL: WARN\nPrismo Utl: WARN\nPrismoUt\nl: WARN\n"), Untouched());
}

TEST(ConfigFile, ALineThatNamesTheLibrarySwitchesTheTerminationLogOn) {
  EXPECT_EQ(Read("PrismoUtl:\n"), Named());
  EXPECT_EQ(Read("PrismoUtl: nothing known here\n"), Named());
  EXPECT_EQ(Read("   before PrismoUtl after\n"), Named());
}

TEST(ConfigFile, TheNameMayEndTheLineOrTheFile) {
  EXPECT_EQ(Read("PrismoUtl"), Named());
  EXPECT_EQ(Read("PrismoUtl\n"), Named());
  EXPECT_EQ(Read("PrismoUtl\r\n"), Named());
  EXPECT_EQ(Read("PrismoUtl:"), Named());
  EXPECT_EQ(Read("PrismoUtl// comment"), Named());
}

TEST(ConfigFile, TheWholeExample) {
  EXPECT_EQ(Read("PrismoUtl: SaveOnError WARN Size2, PATH=\"D:\\logs\\engine\"\n"),
            (LogConfiguration{.folder = "D:\\logs\\engine" + kSlash,
                              .save_on_error = true,
                              .termination_log = true,
                              .level = 2,
                              .records = 4096}));
}

TEST(ConfigFile, CommentsAreCut) {
  EXPECT_EQ(Read("// PrismoUtl: WARN\n"), Untouched());
  EXPECT_EQ(Read("//PrismoUtl: WARN\nPrismoUtl: INFO\n"), NamedWithLevel(1));
  EXPECT_EQ(Read("PrismoUtl: WARN // ERROR SaveOnError PATH=/x\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl: WARN / / ERROR\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl: PATH=//server/share\n"), Named());
  EXPECT_EQ(Read("PrismoUtl: PATH=/a//b\n"), NamedWithFolder("/a" + kSlash));
}

TEST(ConfigFile, OnlyTheFirstLineThatNamesTheLibraryCounts) {
  EXPECT_EQ(Read("Other: FATAL\nPrismoUtl: WARN\nPrismoUtl: ERROR SaveOnError PATH=/x\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl\nPrismoUtl: ERROR\n"), Named());
}

TEST(ConfigFile, Flags) {
  LogConfiguration expected = Named();
  expected.save_on_error = true;
  EXPECT_EQ(Read("PrismoUtl: SaveOnError\n"), expected);
  expected.termination_log = false;
  EXPECT_EQ(Read("PrismoUtl: NoTerminationLog,SaveOnError\n"), expected);
  expected.save_on_error = false;
  EXPECT_EQ(Read("PrismoUtl NoTerminationLog\n"), expected);
  EXPECT_EQ(Read("PrismoUtl saveonerror noterminationlog warn size1,\n"), Named());
}

TEST(ConfigFile, EveryLevel) {
  EXPECT_EQ(Read("PrismoUtl: FATAL\n"), NamedWithLevel(4));
  EXPECT_EQ(Read("PrismoUtl: ERROR\n"), NamedWithLevel(3));
  EXPECT_EQ(Read("PrismoUtl: WARN\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl: INFO\n"), NamedWithLevel(1));
  EXPECT_EQ(Read("PrismoUtl: DEBUG\n"), NamedWithLevel(0));
}

TEST(ConfigFile, OfSeveralLevelsTheMostVerboseWins) {
  EXPECT_EQ(Read("PrismoUtl: WARN FATAL ERROR\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl: INFO FATAL\n"), NamedWithLevel(1));
  EXPECT_EQ(Read("PrismoUtl: DEBUG INFO WARN ERROR FATAL\n"), NamedWithLevel(0));
}

TEST(ConfigFile, KeysAreFoundAnywhereAfterTheName) {
  EXPECT_EQ(Read("PrismoUtl: xxWARNING\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("ERROR PrismoUtl\n"), Named());
  EXPECT_EQ(Read("PrismoUtlFATAL\n"), Named()) << "the separator is the F";
  EXPECT_EQ(Read("PrismoUtl.FATAL\n"), NamedWithLevel(4));
}

TEST(ConfigFile, EverySize) {
  uint32_t records = 1024;
  for (char digit = '0'; digit <= '9'; ++digit, records *= 2) {
    EXPECT_EQ(Read(std::string("PrismoUtl: Size") + digit + ",\n"), NamedWithRecords(records));
    EXPECT_EQ(Read(std::string("PrismoUtl: Size") + digit + "\n"), Named()) << "no comma";
  }
}

TEST(ConfigFile, OfSeveralSizesTheLargestWins) {
  EXPECT_EQ(Read("PrismoUtl: Size7, Size3,\n"), NamedWithRecords(131072));
  EXPECT_EQ(Read("PrismoUtl: Size3,Size0,Size4,\n"), NamedWithRecords(16384));
}

TEST(ConfigFile, KeysInsideThePathDoNotCount) {
  EXPECT_EQ(Read("PrismoUtl: PATH=C:\\ERROR\\x\n"), NamedWithFolder("C:\\ERROR\\x" + kSlash));
  EXPECT_EQ(Read("PrismoUtl: PATH=/a SaveOnError NoTerminationLog FATAL Size5,\n"),
            NamedWithFolder("/a SaveOnError NoTerminationLog FATAL Size5," + kSlash));
  LogConfiguration expected = NamedWithFolder("/FATAL" + kSlash);
  expected.level = 1;
  EXPECT_EQ(Read("PrismoUtl: INFO PATH=/FATAL\n"), expected);
}

TEST(ConfigFile, KeysBeforeAnEmptyPathCount) {
  EXPECT_EQ(Read("PrismoUtl: WARN PATH=\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl: WARN PATH="), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl: WARN PATH=\"\"\r\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl: PATH= ERROR\n"), NamedWithFolder(" ERROR" + kSlash));
}

TEST(ConfigFile, FoldersLoseQuotesAndLineEndsAndGainASeparator) {
  EXPECT_EQ(Read("PrismoUtl:PATH=logs\n"), NamedWithFolder("logs" + kSlash));
  EXPECT_EQ(Read("PrismoUtl:PATH=logs\r\n"), NamedWithFolder("logs" + kSlash));
  EXPECT_EQ(Read("PrismoUtl:PATH=logs"), NamedWithFolder("logs" + kSlash));
  EXPECT_EQ(Read("PrismoUtl:PATH=\"lo\"gs\"\n"), NamedWithFolder("logs" + kSlash));
  EXPECT_EQ(Read("PrismoUtl:PATH=logs" + kSlash + "\n"), NamedWithFolder("logs" + kSlash));
  EXPECT_EQ(Read("PrismoUtl:PATH=\"logs" + kSlash + "\"\n"), NamedWithFolder("logs" + kSlash));
  EXPECT_EQ(Read("PrismoUtl:PATH=" + kSlash), NamedWithFolder(kSlash));
  EXPECT_EQ(Read("PrismoUtl:PATH= a b \n"), NamedWithFolder(" a b " + kSlash));
  EXPECT_EQ(Read("PrismoUtl:PATH=aPATH=b\n"), NamedWithFolder("aPATH=b" + kSlash));
}

TEST(ConfigFile, APathBeforeTheNameIsNone) {
  EXPECT_EQ(Read("PATH=/x PrismoUtl: WARN\n"), NamedWithLevel(2));
}

TEST(ConfigFile, TheSeparatorAfterTheNameIsErased) {
  EXPECT_EQ(Read("PrismoUtlPATH=/x\n"), Named());
  EXPECT_EQ(Read("PrismoUtl,PATH=/x\n"), NamedWithFolder("/x" + kSlash));
}

// Lines are read in pieces of at most 255 characters, and a piece is a line.
TEST(ConfigFile, ALongLineContinuesAsFurtherLines) {
  const std::string fill(246, '.');
  EXPECT_EQ(Read(fill + "PrismoUtl: WARN\n"), Named()) << "the name ends the first piece";
  EXPECT_EQ(Read(fill + ".PrismoUtl: WARN\n"), Untouched()) << "the name is cut in two";
  EXPECT_EQ(Read(std::string(255, '.') + "PrismoUtl: WARN\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("//" + std::string(253, '.') + "PrismoUtl: WARN\n"), NamedWithLevel(2))
      << "a comment ends with its piece";
  EXPECT_EQ(Read("PrismoUtl:" + std::string(241, '.') + "WARN\n"), NamedWithLevel(2));
  EXPECT_EQ(Read("PrismoUtl:" + std::string(242, '.') + "WARN\n"), Named());
}

TEST(ConfigFile, ALongPathIsCutWithItsPiece) {
  const std::string before = "PrismoUtl:PATH=";
  const std::string folder(255 - before.size(), 'p');
  EXPECT_EQ(Read(before + folder + "\n"), NamedWithFolder(folder + kSlash));
  EXPECT_EQ(Read(before + folder + "qqqq\n"), NamedWithFolder(folder + kSlash));
  EXPECT_EQ(Read(before + folder + "PrismoUtl:WARN\n"), NamedWithFolder(folder + kSlash));
}

TEST(ConfigFile, ExactlyFullPiecesLeaveTheNextLineWhole) {
  for (size_t length = 250; length < 260; ++length) {
    EXPECT_EQ(Read(std::string(length, '.') + "\nPrismoUtl: WARN\n"), NamedWithLevel(2)) << length;
    EXPECT_EQ(Read(std::string(length, '.') + "\r\nPrismoUtl: WARN\r\n"), NamedWithLevel(2)) << length;
  }
}

TEST(ConfigFile, AZeroByteEndsItsLine) {
  EXPECT_EQ(Read(std::string("a\0PrismoUtl: WARN\nPrismoUtl: INFO\n", 35)), NamedWithLevel(1));
  EXPECT_EQ(Read(std::string("PrismoUtl: INFO\0 WARN\n", 22)), NamedWithLevel(1));
}

TEST(ConfigFile, AHugeFileIsReadToItsEnd) {
  EXPECT_EQ(Read(std::string(3'000'000, 'x') + "\nPrismoUtl: ERROR"), NamedWithLevel(3));
}

TEST(ConfigFileSearch, TheFileBesideTheExecutableIsFirst) {
  const TempFolder folder;
  const std::string executable = folder / "program";
  std::filesystem::create_directories(folder / "kit");
  EXPECT_EQ(FindConfigurationFile(executable, nullptr), "");
  WriteText(folder / "PrismoUtl.cfg", "");
  EXPECT_EQ(FindConfigurationFile(executable, nullptr), folder / "PrismoUtl.cfg");
  EXPECT_EQ(FindConfigurationFile(executable, (folder / "kit").c_str()), folder / "PrismoUtl.cfg");
}

TEST(ConfigFileSearch, AFolderOfThatNameBesideTheExecutableHidesTheKits) {
  const TempFolder folder;
  std::filesystem::create_directories(folder / "kit");
  std::filesystem::create_directories(folder / "PrismoUtl.cfg");
  EXPECT_EQ(FindConfigurationFile(folder / "program", (folder / "kit").c_str()), folder / "PrismoUtl.cfg");
}

TEST(ConfigFileSearch, TheKitsFileIsSecond) {
  const TempFolder folder;
  const std::string kit = folder / "kit";
  const std::string executable = folder / "program";
  std::filesystem::create_directories(kit);
  const std::string file =
      kit + kSlash + "PrismoApi" + kSlash + "bin" + kSlash + "x64" + kSlash + "PrismoUtl.cfg";
  EXPECT_EQ(FindConfigurationFile(executable, kit.c_str()), file);
  EXPECT_EQ(FindConfigurationFile(executable, (kit + "/").c_str()), file);
  EXPECT_EQ(FindConfigurationFile(executable, (kit + "\\").c_str()), file);
  EXPECT_EQ(FindConfigurationFile(executable, (kit + "//").c_str()).find(kit + "/" + kSlash), 0u)
      << "one is dropped";
}

TEST(ConfigFileSearch, NoKit) {
  const TempFolder folder;
  WriteText(folder / "file", "");
  EXPECT_EQ(FindConfigurationFile(folder / "program", ""), "");
  EXPECT_EQ(FindConfigurationFile(folder / "program", (folder / "none").c_str()), "");
  EXPECT_EQ(FindConfigurationFile(folder / "program", (folder / "file").c_str()), "");
  EXPECT_EQ(FindConfigurationFile("", nullptr), "");
}

TEST(ConfigFileSearch, TheExecutableIsThisTest) {
  EXPECT_TRUE(std::filesystem::is_regular_file(platform::ExecutablePath()));
  EXPECT_NE(platform::ExecutablePath().find("unit_tests"), std::string::npos);
}

#ifndef _WIN32

// A user's folders and a kit of its own for each case.
class LoadConfigurationTest : public testing::Test {
 protected:
  void WriteKitFile(const std::string& text) {
    std::filesystem::create_directories(folder_ / "kit/PrismoApi/bin/x64");
    WriteText(folder_ / "kit/PrismoApi/bin/x64/PrismoUtl.cfg", text);
  }

  const TempFolder folder_;
  const ScopedEnvironment home_{"HOME", folder_ / "home"};
  const ScopedEnvironment data_{"XDG_DATA_HOME", std::nullopt};
  const ScopedEnvironment kit_{"PRISMOSDK", folder_ / "kit"};
};

TEST_F(LoadConfigurationTest, TheDefaultFolderIsMadeWithAllItsLevels) {
  const LogConfiguration configuration = LoadConfiguration();
  EXPECT_EQ(configuration,
            (LogConfiguration{.folder = folder_ / "home/.local/share/HALDEN VEXO/PrismoSDK/"}));
  EXPECT_TRUE(std::filesystem::is_directory(configuration.folder));
}

TEST_F(LoadConfigurationTest, AnotherDataFolder) {
  const ScopedEnvironment data("XDG_DATA_HOME", folder_ / "data");
  const LogConfiguration configuration = LoadConfiguration();
  EXPECT_EQ(configuration.folder, folder_ / "data/HALDEN VEXO/PrismoSDK/");
  EXPECT_TRUE(std::filesystem::is_directory(configuration.folder));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "home"));
}

TEST_F(LoadConfigurationTest, AnEmptyDataFolderIsNone) {
  const ScopedEnvironment data("XDG_DATA_HOME", "");
  EXPECT_EQ(LoadConfiguration().folder, folder_ / "home/.local/share/HALDEN VEXO/PrismoSDK/");
}

TEST_F(LoadConfigurationTest, NoHomeNoFolder) {
  const ScopedEnvironment home("HOME", std::nullopt);
  WriteKitFile("PrismoUtl: WARN");
  EXPECT_EQ(LoadConfiguration(), (LogConfiguration{.termination_log = true, .level = 2}));
}

TEST_F(LoadConfigurationTest, AFolderThatCannotBeMadeIsKeptAllTheSame) {
  WriteText(folder_ / "home", "a file");
  EXPECT_EQ(LoadConfiguration(),
            (LogConfiguration{.folder = folder_ / "home/.local/share/HALDEN VEXO/PrismoSDK/"}));
}

TEST_F(LoadConfigurationTest, TheKitsFileIsRead) {
  WriteKitFile("Other: FATAL\r\nPrismoUtl: SaveOnError ERROR Size4,\r\n");
  EXPECT_EQ(LoadConfiguration(),
            (LogConfiguration{.folder = folder_ / "home/.local/share/HALDEN VEXO/PrismoSDK/",
                              .save_on_error = true,
                              .termination_log = true,
                              .level = 3,
                              .records = 16384}));
}

TEST_F(LoadConfigurationTest, AKitWithoutTheFileOrWithAFolderInItsPlace) {
  std::filesystem::create_directories(folder_ / "kit");
  EXPECT_FALSE(LoadConfiguration().termination_log);
  std::filesystem::create_directories(folder_ / "kit/PrismoApi/bin/x64/PrismoUtl.cfg");
  EXPECT_FALSE(LoadConfiguration().termination_log);
}

TEST_F(LoadConfigurationTest, TheNamedFolderIsMadeOneLevelDeep) {
  WriteKitFile("PrismoUtl: PATH=\"" + folder_ / "logs" + "\"\n");
  EXPECT_EQ(LoadConfiguration().folder, folder_ / "logs/");
  EXPECT_TRUE(std::filesystem::is_directory(folder_ / "logs"));
  WriteKitFile("PrismoUtl: PATH=" + (folder_ / "deep/logs"));
  EXPECT_EQ(LoadConfiguration().folder, folder_ / "deep/logs/");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "deep"));
}

TEST_F(LoadConfigurationTest, TheEnvironmentIsReadEachTime) {
  WriteKitFile("PrismoUtl: WARN");
  EXPECT_EQ(LoadConfiguration().level, 2u);
  const ScopedEnvironment kit("PRISMOSDK", std::nullopt);
  EXPECT_EQ(LoadConfiguration().level, 0u);
}

#endif

// The fuzzer's own checks on lines made of the words that matter, and on noise.
TEST(ConfigFileFuzz, SeedsReplay) {
  constexpr uint32_t kSeed = 7340033;
  RecordProperty("seed", kSeed);
  std::mt19937 generator(kSeed);
  const auto random = [&] { return static_cast<uint32_t>(generator()); };
  const std::string words[] = {"PrismoUtl",
                               ":",
                               ",",
                               " ",
                               "\n",
                               "\r\n",
                               "//",
                               "\"",
                               "PATH=",
                               "/",
                               "\\",
                               "SaveOnError",
                               "NoTerminationLog",
                               "FATAL",
                               "ERROR",
                               "WARN",
                               "INFO",
                               "DEBUG",
                               "Size0,",
                               "Size9,",
                               std::string(1, '\0'),
                               std::string(250, 'x'),
                               "x"};
  for (int run = 0; run < 3000; ++run) {
    std::string text;
    for (uint32_t count = random() % 30; count > 0; --count) text += words[random() % std::size(words)];
    if (run % 5 == 0 && !text.empty()) text[random() % text.size()] = static_cast<char>(random());
    test::FuzzConfigFile(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  }
}

}  // namespace
}  // namespace prismo::mp

#include "mp/config_file.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include "platform/folders.h"
#include "platform/module_path.h"

namespace prismo::mp {
namespace {

constexpr const char* kFileName = "PrismoUtl.cfg";
constexpr std::string_view kLibraryName = "PrismoUtl";
constexpr std::string_view kPathKey = "PATH=";

// With its terminating zero. A folder taken from a line so stays within 260 characters.
constexpr size_t kLineBytes = 256;

struct LevelKey {
  std::string_view name;
  uint32_t level;
};

constexpr LevelKey kLevelKeys[] = {{"FATAL", 4}, {"ERROR", 3}, {"WARN", 2}, {"INFO", 1}, {"DEBUG", 0}};

struct SizeKey {
  std::string_view name;
  uint32_t records;
};

constexpr SizeKey kSizeKeys[] = {{"Size0,", 1024},   {"Size1,", 2048},  {"Size2,", 4096},  {"Size3,", 8192},
                                 {"Size4,", 16384},  {"Size5,", 32768}, {"Size6,", 65536}, {"Size7,", 131072},
                                 {"Size8,", 262144}, {"Size9,", 524288}};

// A line that does not fit the buffer continues as further lines.
bool NextLine(std::istream& file, std::string& line) {
  std::array<char, kLineBytes> buffer{};
  file.getline(buffer.data(), buffer.size());
  if (file.gcount() == 0) return false;
  if (file.fail()) file.clear();
  line = buffer.data();
  return true;
}

void CutComment(std::string& line) {
  if (const size_t comment = line.find("//"); comment != std::string::npos) line.resize(comment);
}

void ApplyKeys(std::string_view keys, LogConfiguration& configuration) {
  const auto given = [&](std::string_view key) { return keys.find(key) != keys.npos; };
  if (given("SaveOnError")) configuration.save_on_error = true;
  if (given("NoTerminationLog")) configuration.termination_log = false;
  for (const LevelKey& key : kLevelKeys) {
    if (given(key.name)) configuration.level = key.level;
  }
  for (const SizeKey& key : kSizeKeys) {
    if (given(key.name)) configuration.records = key.records;
  }
}

// `rest` is what follows the library's name and one separator character.
bool ApplyLine(const std::string& rest, LogConfiguration& configuration) {
  configuration.save_on_error = false;
  configuration.termination_log = true;
  const size_t path = rest.find(kPathKey);
  ApplyKeys(std::string_view(rest).substr(0, path), configuration);  // a path may contain any word
  if (path == std::string::npos) return false;

  std::string folder = rest.substr(path + kPathKey.size());
  std::erase_if(folder, [](char c) { return c == '"' || c == '\n' || c == '\r'; });
  if (folder.empty()) return false;
  if (folder.back() != platform::kSeparator) folder += platform::kSeparator;
  configuration.folder = folder;
  return true;
}

std::string MakeDefaultFolder() {
  std::string folder = platform::LocalDataFolder();
  if (folder.empty()) return folder;
  for (const char* level : {"HALDEN VEXO", "PrismoSDK"}) (folder += platform::kSeparator) += level;
  folder += platform::kSeparator;
  for (size_t end = 0; (end = folder.find(platform::kSeparator, end + 1)) != std::string::npos;) {
    platform::CreateFolder(folder.substr(0, end));
  }
  return folder;
}

}  // namespace

bool ReadConfiguration(std::istream& file, LogConfiguration& configuration) {
  for (std::string line; NextLine(file, line);) {
    CutComment(line);
    if (const size_t name = line.find(kLibraryName); name != std::string::npos) {
      return ApplyLine(line.erase(0, name + kLibraryName.size() + 1), configuration);
    }
  }
  return false;
}

std::string FindConfigurationFile(const std::string& executable, const char* kit_folder) {
  using platform::kSeparator;
  if (const size_t folder_end = executable.rfind(kSeparator); folder_end != std::string::npos) {
    const std::string beside = executable.substr(0, folder_end + 1) + kFileName;
    if (platform::Exists(beside)) return beside;
  }

  std::string kit = kit_folder ? kit_folder : "";
  if (kit.empty()) return {};
  if (kit.back() == '/' || kit.back() == '\\') kit.pop_back();
  kit += kSeparator;
  if (!platform::IsFolder(kit)) return {};
  for (const char* level : {"PrismoApi", "bin", "x64"}) (kit += level) += kSeparator;
  return kit + kFileName;
}

LogConfiguration LoadConfiguration() noexcept {
  LogConfiguration configuration;
  try {
    configuration.folder = MakeDefaultFolder();
    std::ifstream file(FindConfigurationFile(platform::ExecutablePath(), std::getenv("PRISMOSDK")));
    if (ReadConfiguration(file, configuration)) platform::CreateFolder(configuration.folder);
  } catch (...) {
    // The settings made so far stand.
  }
  return configuration;
}

}  // namespace prismo::mp

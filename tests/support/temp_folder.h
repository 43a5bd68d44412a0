// Files of a test, in a folder that goes when the test does.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace prismo::test {

using Bytes = std::vector<uint8_t>;

class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

Bytes ReadFile(const std::string& path);
void WriteFile(const std::string& path, const Bytes& content);

// With the line ends of text files, whatever they are on this system.
std::string ReadText(const std::string& path);
void WriteText(const std::string& path, std::string_view content);

// The number of `bytes` bytes at an offset, lowest byte first.
uint32_t LittleEndian(const Bytes& content, size_t offset, size_t bytes);

}  // namespace prismo::test

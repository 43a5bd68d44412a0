// One call of the prismo command with arbitrary words, in a folder with files of all kinds. The words stand
// one a line. They name nothing outside the folder: separators are taken out of them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "application.h"
#include "fuzz/seeds.h"
#include "support/temp_folder.h"

namespace prismo::test {

// Files of all kinds, in the working folder for as long as it exists.
class ToolOptionsFolder {
 public:
  ToolOptionsFolder() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(Folder());
    static const std::map<std::string, Bytes> inputs = ToolInputs();
    for (const auto& [name, content] : inputs) WriteFile(name, content);
  }
  ~ToolOptionsFolder() {
    for (const auto& entry : std::filesystem::directory_iterator(".")) std::filesystem::remove_all(entry);
    std::filesystem::current_path(before_);
  }
  ToolOptionsFolder(const ToolOptionsFolder&) = delete;
  ToolOptionsFolder& operator=(const ToolOptionsFolder&) = delete;

  // Whether a file is left that no command meant to leave.
  static bool HoldsScratchFiles() {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      if (entry.path().filename().string().starts_with(".prismo-")) return true;
    }
    return false;
  }

 private:
  static std::string Folder() {
    static const TempFolder folder;
    return folder / "";
  }

  const std::filesystem::path before_;
};

inline std::vector<std::string> ToolWords(const uint8_t* data, size_t size) {
  std::vector<std::string> words;
  std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
  for (std::string word; std::getline(lines, word);) {
    word.resize(std::min(word.find('\0'), word.size()));
    std::erase_if(word, [](char c) { return c == '/' || c == '\\'; });
    for (size_t at; (at = word.find("..")) != std::string::npos;) word.erase(at, 1);
    words.push_back(word);
  }
  return words;
}

// What a demo without a file of its own begins with, for a second.
inline bool RendersTheScene(const std::vector<std::string>& words) {
  return !words.empty() && words[0] == "demo" &&
         std::none_of(words.begin() + 1, words.end(), [](const std::string& word) {
           return word.ends_with(".rwh") && std::filesystem::exists(word);
         });
}

// What measures does it for more than a second.
inline bool Measures(const std::vector<std::string>& words) { return !words.empty() && words[0] == "bench"; }

inline void FuzzToolOptions(const uint8_t* data, size_t size) {
  const ToolOptionsFolder folder;
  std::vector<std::string> words = ToolWords(data, size);
  if (RendersTheScene(words) || Measures(words)) return;
  words.insert(words.begin(), "prismo");
  std::vector<const char*> argv;
  for (const std::string& word : words) argv.push_back(word.c_str());

  std::ostringstream out, err;
  std::streambuf* const out_before = std::cout.rdbuf(out.rdbuf());
  std::streambuf* const err_before = std::cerr.rdbuf(err.rdbuf());
  const int code = tool::Run(static_cast<int>(argv.size()), argv.data());
  std::cout.rdbuf(out_before);
  std::cerr.rdbuf(err_before);

  const bool complains = err.str().starts_with("prismo: ") && err.str().ends_with('\n');
  if (code < 0 || code > 2 || (code != 0 && !complains)) std::abort();
  if (code == 2 && !out.str().empty()) std::abort();
  if (folder.HoldsScratchFiles()) std::abort();
}

}  // namespace prismo::test

// fuzz_seeds FOLDER: writes what the fuzzers start from to FOLDER/TARGET_fuzz/, a file for each input.
#include <cstdio>
#include <filesystem>

#include "fuzz/seeds.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
    return 2;
  }
  const auto all_seeds = prismo::test::FuzzSeeds();
  for (const auto& [target, seeds] : all_seeds) {
    const std::filesystem::path folder = std::filesystem::path(argv[1]) / (target + "_fuzz");
    std::filesystem::create_directories(folder);
    for (size_t i = 0; i < seeds.size(); ++i) {
      prismo::test::WriteFile((folder / std::to_string(i)).string(), seeds[i]);
    }
  }
}

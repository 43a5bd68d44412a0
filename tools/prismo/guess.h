// What a headerless dump may hold, from its name and its length.
#pragma once

#include <filesystem>

#include "raw_input.h"

namespace prismo::tool {

// Completes what the user says about a dump: a size and a format that its length allows. Sizes are looked for
// in the name ("1920x1076") and, where it has none, among those of common sensors. Formats are looked for in
// the name by their names and by phase and depth ("rggb", "12bit"); where it has none, the dump is taken for
// a Bayer frame of a phase unknown. Throws when nothing fits, and names all when several do.
struct GuessedLayout {
  DumpLayout layout;
  bool phase_known;
};
GuessedLayout GuessLayout(const std::filesystem::path& path, const DumpLayout& given);

}  // namespace prismo::tool

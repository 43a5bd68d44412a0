// What the fuzzers start from, and what they have found: well-formed inputs of every kind, and the shortest
// form of each input that ever broke something.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace prismo::test {

// By the target's name ("log_text").
std::map<std::string, std::vector<Bytes>> FuzzSeeds();

// Files of every kind that the prismo command reads, by their names.
std::map<std::string, Bytes> ToolInputs();

}  // namespace prismo::test

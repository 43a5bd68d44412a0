// Results for people.
#pragma once

#include <string>

#include "results.h"

namespace prismo::bench {

// Whether other libraries take part.
enum class Peers : bool { kNone, kSome };

// What the columns mean.
std::string Method(int rounds, Peers peers);

// A table on the standard output, row by row as results come in.
void PrintHead(Peers peers);
void PrintRow(const Result& result, Peers peers);

// Three digits that count.
std::string Milliseconds(double seconds);

}  // namespace prismo::bench

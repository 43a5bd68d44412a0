// What the conversions are meant to reach.
#pragma once

#include "results.h"

namespace prismo::bench {

// Prints the rows that miss their goal by more than 10 %, with the goal and our time as a multiple of the
// better loop that reads and writes exactly as many bytes, and returns how many there are. A goal that this
// loop misses by more than 10 % itself is out of the machine's reach: it counts over the loop's time instead,
// and the row is named. A row of which there are several results, of several runs, is judged by the worst.
// Goals of rows of the caller's thread are multiples of the limit: those of processors with AVX-512, or of
// those with AVX2, as the machine's facts name the instruction set; others have none, nor have rows that are
// hardly used (most to padded rows). Goals of pools of two are how much faster than the caller's thread they
// are.
int ReportGoals(const Report& report);

}  // namespace prismo::bench

// The table of what is measured: every family of conversions, on the caller's thread and on the pool.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "frames.h"
#include "support/routines.h"

namespace prismo::bench {

using test::On;

// One frame to convert, and where to.
struct Job {
  Size size;
  const uint8_t* source;
  size_t source_bytes;
  uint8_t* target;
  size_t target_bytes;
  size_t target_pitch;
  std::string path;  // of the file to write or to read, where there is one
};

struct Target {
  const char* name;
  uint32_t format;  // 0: nothing in memory
  bool padded = false;
};

struct Conversion {
  std::string name;  // family/source/target
  On on;
  uint32_t source_format;  // 0: no frame
  Target target;
  std::function<uint32_t(const Job&)> run;
  // The same work done plainly, where the limits of the memory are not the measure.
  const char* floor_name = nullptr;
  std::function<void(const Job&)> floor = nullptr;
  bool writes_file = false;
  std::function<void(const Job&)> prepare = nullptr;  // once, before the first call
  bool rested = false;  // each call comes after a pause in which the pool's threads fall asleep

  // Padded targets are measured two pixels narrower than asked: usual widths need no padding.
  Size SizeFor(Size asked) const;
  size_t SourceBytes(Size size) const;
  size_t TargetPitch(Size size) const;
};

const std::vector<Conversion>& Conversions();

// The same conversion on the caller's thread, or null.
const Conversion* CallerFormOf(const Conversion& conversion);

}  // namespace prismo::bench

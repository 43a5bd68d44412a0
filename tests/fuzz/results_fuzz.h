// Results of the benchmark as a file may hold them: they are read, or refused; what is written is read again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "bench/json.h"

namespace prismo::test {

inline void FuzzResults(const uint8_t* data, size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  try {
    bench::ParseJson(text);
  } catch (const std::invalid_argument&) {
  }
  const std::string read = bench::ParseJson(bench::Quoted(text)).text;
  for (char& c : text) c = static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  if (read != text) std::abort();
}

}  // namespace prismo::test

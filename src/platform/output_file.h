// A new or overwritten file, written in pieces that lie anywhere in memory.
#pragma once

#include <cstddef>
#include <memory>

namespace prismo::platform {

class OutputFile {
 public:
  OutputFile();
  ~OutputFile();  // closes; what has not been written by then is dropped

  // False for a null path, too.
  bool Open(const char* path);

  // Appends bytes. They may stay where they are until Close and must not change before.
  void Write(const void* data, size_t bytes);

  // Writes what is outstanding. False when the file could not be written whole.
  bool Close();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace prismo::platform

// This library as a module of the process.
#pragma once

#include <windows.h>

#include <cstdint>

namespace prismo::platform {

// The library's handle, or the program's where the library has been linked into it.
HMODULE Module() noexcept;

enum class Unload {
  kNo,
  kAlone,        // by FreeLibrary: threads live, but the loader's lock keeps them from beginning and ending
  kWithProcess,  // all other threads have been ended, wherever they were
};

Unload UnloadState() noexcept;

}  // namespace prismo::platform

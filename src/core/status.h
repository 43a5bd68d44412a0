// The status codes inside the library. The values are those of PrismoUtl.h.
#pragma once

#include <cstdint>
#include <utility>

#include "PrismoUtl.h"

namespace prismo {

enum class Status : uint32_t {
  kSuccess = UTL_STS_SUCCESS,
  kInvalidParameter = UTL_STS_INVALID_PARAMETER,
  kTimeout = UTL_STS_TIMEOUT,
  kFileOpenError = UTL_STS_FILE_OPEN_ERROR,
  kFileWriteError = UTL_STS_FILE_WRITE_ERROR,
  kFileReadError = UTL_STS_FILE_READ_ERROR,
  kFileNotFound = UTL_STS_FILE_NOT_FOUND,
  kFailure = UTL_STS_FAILURE,
};

constexpr uint32_t Code(Status status) { return static_cast<uint32_t>(status); }

// Runs a body that may throw and turns any exception into `on_exception`: nothing crosses the interface.
template <class Body>
Status NoThrow(Status on_exception, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return on_exception;
  }
}

}  // namespace prismo

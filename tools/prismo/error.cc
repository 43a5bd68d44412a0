#include "error.h"

#include <ios>

#include "PrismoUtl.h"

namespace prismo::tool {
namespace {

const char* Meaning(uint32_t status) {
  switch (status) {
    case UTL_STS_INVALID_PARAMETER:
      return "invalid parameter";
    case UTL_STS_TIMEOUT:
      return "the worker pool did not finish in time";
    case UTL_STS_FILE_OPEN_ERROR:
      return "a file could not be opened";
    case UTL_STS_FILE_WRITE_ERROR:
      return "writing the file failed";
    case UTL_STS_FILE_READ_ERROR:
      return "reading the file failed";
    case UTL_STS_FILE_NOT_FOUND:
      return "no such folder";
    case UTL_STS_FAILURE:
      return "failure";
    default:
      return "unknown status";
  }
}

std::string Failure(uint32_t status, const std::string& operation) {
  return Text(operation, " failed: ", Meaning(status), " (status 0x", std::hex, status, ")");
}

}  // namespace

void Check(uint32_t status, const std::string& operation) {
  if (status != UTL_STS_SUCCESS) throw Error(Failure(status, operation));
}

void CheckFile(uint32_t status, const std::filesystem::path& path, const std::string& operation) {
  if (status != UTL_STS_SUCCESS) throw FileError(path, Failure(status, operation));
}

}  // namespace prismo::tool

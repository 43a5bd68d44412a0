// Other programs, run to their end.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace prismo::test {

constexpr DWORD kStillRunning = STILL_ACTIVE;

// The program's exit code; kStillRunning, after ending it, if it has not ended after a minute.
inline DWORD RunProgram(const std::string& program, const std::string& arguments) {
  std::string line = '"' + program + "\" " + arguments;
  STARTUPINFOA startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                      &process)) {
    ADD_FAILURE() << "cannot run " << line << ": error " << GetLastError();
    return ~DWORD{0};
  }
  if (WaitForSingleObject(process.hProcess, 60'000) != WAIT_OBJECT_0) {
    TerminateProcess(process.hProcess, kStillRunning);
    WaitForSingleObject(process.hProcess, INFINITE);
  }
  DWORD code = 0;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

// The folder of this test's own program, where the library and the guest are, too.
inline std::string ProgramFolder() {
  char path[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  const std::string program(path);
  return program.substr(0, program.rfind('\\'));
}

}  // namespace prismo::test

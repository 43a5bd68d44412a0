# The library exports the names of the list and no others, and needs no other libraries than the system's.
# cmake -D OBJDUMP= -D DLL= -D LIST= -P check_dll.cmake
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)

string(REGEX MATCHALL "\n\t\\[ *[0-9]+\\] [A-Za-z0-9_]+" exported "${headers}")
list(TRANSFORM exported REPLACE ".*\\] " "")
list(SORT exported)
file(STRINGS ${LIST} listed)
list(SORT listed)
list(LENGTH listed count)
if(NOT exported STREQUAL listed)
  message(FATAL_ERROR "exported:\n${exported}\nlisted:\n${listed}")
endif()

# Threads of the application begin and end without a call of the library, as far as the system lets it choose.
if(NOT headers MATCHES "DisableThreadLibraryCalls")
  message(FATAL_ERROR "${DLL} does not turn off the notifications of threads")
endif()

string(REGEX MATCHALL "DLL Name: [^\n]+" needed "${headers}")
foreach(name IN LISTS needed)
  if(NOT name MATCHES "(KERNEL32|msvcrt|gdiplus|SHELL32|SHLWAPI|api-ms-win-core-synch-[a-z0-9-]+)\\.(dll|DLL)$")
    message(FATAL_ERROR "${DLL} needs ${name}")
  endif()
endforeach()
message(STATUS "${count} names, ${needed}")

# What differs between systems stands in the platform's folder, and in the folders posix and win32 of the tool: no
# other source asks for which system it is compiled or includes a system's headers. The public header asks, for it
# declares what is imported on Windows.
# cmake -D ROOT= -P check_systems.cmake
cmake_minimum_required(VERSION 3.25)
file(GLOB_RECURSE sources RELATIVE ${ROOT} ${ROOT}/src/* ${ROOT}/tools/*)
list(FILTER sources INCLUDE REGEX "\\.(cc|h|hpp|c)$")
list(FILTER sources EXCLUDE REGEX "^src/platform/|/(posix|win32)/")
list(LENGTH sources count)
if(count LESS 100)
  message(FATAL_ERROR "${count} sources only under ${ROOT}")
endif()

set(system "_WIN32|_WIN64|WIN32_|_MSC_VER|__MINGW|__linux__|__unix__|__APPLE__")
set(headers "windows|winbase|process|io|unistd|pthread|dlfcn|signal|fcntl|sched|sys/[a-z]+|linux/[a-z]+")
set(asking)
foreach(source IN LISTS sources)
  file(STRINGS ${ROOT}/${source} lines REGEX "^ *# *(if|elif).*(${system})|^ *# *include <(${headers})\\.h>")
  foreach(line IN LISTS lines)
    list(APPEND asking ${source})
    message(STATUS "${source}: ${line}")
  endforeach()
endforeach()
if(NOT asking STREQUAL "src/api/PrismoUtl.h")
  message(FATAL_ERROR "only the public header may ask for the system, once: ${asking}")
endif()

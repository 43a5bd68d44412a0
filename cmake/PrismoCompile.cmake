# Language level, warnings and instrumentation: one interface target that every target of ours links.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

find_program(PRISMO_CCACHE ccache)
if(PRISMO_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${PRISMO_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${PRISMO_CCACHE})
endif()

if(WIN32)  # which finds libraries beside programs
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endif()

# prismo_find_headers(<variable> <name> <header>): where to include <header> from, which is or is in <name>.
# Headers serve every target, but when cross-compiling nothing else may be seen of this system's.
function(prismo_find_headers variable name header)
  if(CMAKE_CROSSCOMPILING)
    find_path(${variable}_OF_HOST ${header} PATHS /usr/include REQUIRED
      NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    set(headers ${PROJECT_BINARY_DIR}/headers)
    file(MAKE_DIRECTORY ${headers})
    file(CREATE_LINK ${${variable}_OF_HOST}/${name} ${headers}/${name} SYMBOLIC)
    set(${variable} ${headers} PARENT_SCOPE)
  else()
    find_path(${variable} ${header} REQUIRED)
  endif()
endfunction()

add_library(prismo_compile INTERFACE)
target_compile_options(prismo_compile INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wno-sign-conversion -Wundef
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>
  # GCC 12 sees overlapping copies in plain concatenations of strings.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # Bytes of the output depend on float rounding: never fuse a multiply and an add.
  -ffp-contract=off -fvisibility=hidden)

if(PRISMO_SANITIZE)
  add_compile_options(-fsanitize=${PRISMO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${PRISMO_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-Wno-maybe-uninitialized)  # false alarms in instrumented headers of the C++ library
  endif()
endif()
if(PRISMO_COVERAGE)
  add_compile_options(-fprofile-arcs -ftest-coverage -fprofile-update=atomic)  # as threads count side by side
  add_link_options(--coverage)
endif()

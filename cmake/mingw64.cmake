# 64-bit Windows by MinGW-w64, in the flavour with the C++ library's own threads.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Functions of Windows get a stack that is aligned to 16 bytes, and GCC (bug 54412) moves vectors of 32 and 64
# bytes to and from it with the instructions that fault when they are not aligned to their size. The assembler
# replaces these by their tolerant forms, which are as fast where the address is aligned.
set(CMAKE_C_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
set(CMAKE_CXX_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
# Programs and libraries need nothing but what the system has.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/under-wine)

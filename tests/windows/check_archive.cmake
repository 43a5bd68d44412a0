# The archive for Windows, unpacked: it is complete, its tool runs, and a C program needs nothing beside its header,
# library and import library, of either linker.
# cmake -D CPACK= -D BUILD= -D WORK= -D RUN= -D CC= -D LINK= -P check_archive.cmake
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CPACK} -G ZIP -B ${WORK}/packages WORKING_DIRECTORY ${BUILD}
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(GLOB archive ${WORK}/packages/*.zip)
file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION "${WORK}/an unpacked archive")
file(GLOB root "${WORK}/an unpacked archive/PrismoUtl-*")

file(GLOB_RECURSE files RELATIVE ${root} ${root}/*)
list(FILTER files EXCLUDE REGEX "^lib/(cmake|pkgconfig)/")
set(expected NOTICES.txt bin/PrismoUtl64.dll bin/prismo.exe include/PrismoUtl.h include/prismoutl.hpp
  lib/PrismoUtl64.lib lib/libPrismoUtl64.dll.a licences/Apache-2.0.txt licences/GPL-3.txt
  licences/gcc-mingw-w64-x86-64-posix-runtime.txt licences/libcli11-dev.txt licences/libhwy-dev.txt
  licences/mingw-w64-x86-64-dev.txt)
list(SORT files)
list(SORT expected)
if(NOT files STREQUAL expected)
  message(FATAL_ERROR "packed:\n${files}\nexpected:\n${expected}")
endif()
file(READ ${root}/NOTICES.txt notices)
string(REGEX MATCHALL "licences/[A-Za-z0-9.-]+\\.txt" named "${notices}")
foreach(licence IN LISTS named)
  if(NOT EXISTS ${root}/${licence})
    message(FATAL_ERROR "NOTICES.txt names ${licence}, which is not there")
  endif()
endforeach()

# For MinGW: a conversion and a JPEG file.
set(sources ${CMAKE_CURRENT_LIST_DIR})
execute_process(COMMAND ${CC} -I${root}/include ${sources}/guest/guest.c -o ${root}/bin/guest.exe
  -L${root}/lib -lPrismoUtl64 COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${RUN} ${root}/bin/guest.exe convert ${WORK} COMMAND_ERROR_IS_FATAL ANY)
file(READ "${WORK}/a picture.jpg" start LIMIT 3 HEX)
if(NOT start STREQUAL "ffd8ff")
  message(FATAL_ERROR "a picture.jpg starts with ${start}")
endif()

# The tool makes a camera frame of the picture, and a picture of the frame.
file(COPY "${WORK}/a picture.bmp" DESTINATION "${WORK}/the tool")
foreach(arguments "mosaic;a picture.bmp;--format;BayerRG12;-o;a frame.rwh" "convert;a frame.rwh;-o;again.bmp")
  execute_process(COMMAND ${RUN} ${root}/bin/prismo.exe ${arguments} WORKING_DIRECTORY "${WORK}/the tool"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(SIZE "${WORK}/the tool/again.bmp" again)
if(NOT again GREATER 9216)
  message(FATAL_ERROR "again.bmp has ${again} bytes")
endif()

# For Microsoft's linker, by one that takes the same files.
execute_process(COMMAND ${CC} -O1 -fno-tree-loop-distribute-patterns -I${root}/include
  -c ${sources}/microsoft/client.c -o ${WORK}/client.obj COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${LINK} /nodefaultlib /entry:Entry /subsystem:console /out:${root}/bin/client.exe
  ${WORK}/client.obj ${root}/lib/PrismoUtl64.lib COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${RUN} ${root}/bin/client.exe RESULT_VARIABLE result)
if(NOT result EQUAL 42)
  message(FATAL_ERROR "the program of the other linker returned ${result}")
endif()
message(STATUS "${archive}: the tool and two programs run")

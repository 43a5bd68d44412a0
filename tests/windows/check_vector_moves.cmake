# No move that faults where its address is not aligned to vectors of 32 or 64 bytes: the stack is aligned to 16.
# cmake -D OBJDUMP= -D DLL= -P check_vector_moves.cmake
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${DLL} OUTPUT_VARIABLE code COMMAND_ERROR_IS_FATAL ANY)

string(REGEX MATCHALL "[\t ]vmovdqu[0-9]* [^\n]*%[yz]mm" tolerant "${code}")
list(LENGTH tolerant count)
if(count EQUAL 0)
  message(FATAL_ERROR "${DLL} has no vector code")
endif()
string(REGEX MATCHALL "[\t ]vmov(aps|apd|dqa|dqa32|dqa64)[\t ]+([^\n]*\\)[^\n]*%[yz]mm|%[yz]mm[^\n]*\\))" strict "${code}")
if(strict)
  list(LENGTH strict bad)
  list(SUBLIST strict 0 10 first)
  list(JOIN first "\n" first)
  message(FATAL_ERROR "${bad} moves need an aligned address:\n${first}")
endif()
message(STATUS "${count} tolerant moves")

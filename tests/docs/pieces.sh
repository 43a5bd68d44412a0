#!/usr/bin/env bash
# pieces.sh LANGUAGE SOURCE LINK: makes a program of the few lines in SOURCE (C or CXX, with the declarations that they
# take for granted), a project of it and of the lines in LINK, and builds and runs it.
set -euo pipefail
case $1 in
  C)
    includes='#include <stdlib.h>'
    before='int main(void) { void* frame = calloc(1920 * 1080, 2); void* bgra = malloc(1920 * 1080 * 4);'
    after='return (int)status; }' ;;
  CXX)
    includes=$'#include <iostream>\n#include <vector>'
    before='int main() { std::vector<unsigned short> frame(1920 * 1080);'
    after='return !result; }' ;;
esac
mkdir -p "program in $1"
{
  printf '%s\n' "$includes"
  grep -E '^(#include|using)' "$2"
  printf '%s\n' "$before"
  grep -vE '^(#include|using)' "$2"
  printf '%s\n' "$after"
} >"program in $1/$2"
{
  printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' "project(program LANGUAGES $1)" 'set(CMAKE_CXX_STANDARD 20)' \
    "add_executable(program $2)"
  cat "$3"
} >"program in $1/CMakeLists.txt"
cmake -G Ninja -S "program in $1" -B "program in $1/build" -DCMAKE_PREFIX_PATH="$HOME/prismo"
cmake --build "program in $1/build"
"program in $1/build/program"

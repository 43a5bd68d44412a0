#!/usr/bin/env bash
# readme.sh WORK BUILD: does what README.md says, in a folder of its own: the commands of the tool, the installation,
# the programs. Tasks of ./dev are left to those who can install packages.
set -euo pipefail
here=$(cd -- "$(dirname -- "$0")" && pwd)
readme=$here/../../README.md
work=$1 build=$2
block() { "$here/block.sh" "$readme" "$@"; }

rm -rf -- "$work"
mkdir -p -- "$work/home" "$work/build"
cd -- "$work"
ln -s "$build" build/release
export HOME=$PWD/home PATH=$build/tools/prismo:$PATH

echo "== The tool"
prismo demo -o demo >log
mv demo/frame.rwh .
head -c $((1920 * 1080 * 2)) /dev/zero >dump.raw
mkdir -p pictures
set -x
eval "$(block "The tool" 1)" >>log
[[ -s frame.bmp && -s dump.png && -s pictures/frame.jpg && -s phases.png ]]

echo "== Installing it"
eval "$(block "Installing it" 2 | grep -v '^\./dev')" >log

echo "== Examples"
ln -s "$here/../../examples" examples
rm frame.bmp
eval "$(block Examples 1)"
[[ -s frame.bmp ]]

echo "== The library in a program, and in C++"
mkdir program
cd program
{
  block "The library in a program" 1 | grep '#include'
  echo '#include <stdlib.h>'
  echo 'int main(void) { void* frame = calloc(1920 * 1080, 2); void* bgra = malloc(1920 * 1080 * 4);'
  block "The library in a program" 1 | grep -v '#include'
  echo 'return (int)status; }'
} >main.c
{
  printf '%s\n' '#include <iostream>' '#include <vector>'
  block "The library in C++" 1 | sed '/^using/a int main() { std::vector<unsigned short> frame(1920 * 1080);'
  echo 'return !result; }'
} >main.cc
for language in "C main.c" "CXX main.cc"; do
  printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' "project(program LANGUAGES ${language% *})" \
    'set(CMAKE_CXX_STANDARD 20)' "add_executable(program ${language#* })" >CMakeLists.txt
  block "The library in a program" 2 >>CMakeLists.txt
  rm -rf build
  cmake -G Ninja -S . -B build -DCMAKE_PREFIX_PATH="$HOME/prismo"
  cmake --build build
  build/program
done

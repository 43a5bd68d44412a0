#!/usr/bin/env bash
# build.sh WORK PREFIX: builds the examples against an installed library, and makes a frame for them.
set -euo pipefail
examples=$(cd -- "$(dirname -- "$0")/../../examples" && pwd)
rm -rf -- "$1"
mkdir -p -- "$1"
cd -- "$1"
cmake -G Ninja -S "$examples" -B build -DCMAKE_PREFIX_PATH="$2" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON >log || { cat log && exit 1; }
cmake --build build >log || { cat log && exit 1; }
"$2/bin/prismo" demo -o demo >log

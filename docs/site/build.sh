#!/usr/bin/env bash
# build.sh FOLDER: makes the site of the guides and the reference there, by Doxygen; warnings are errors.
set -euo pipefail
mkdir -p -- "$1"
output=$(cd -- "$1" && pwd)
cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../.."
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
{
  cat docs/site/Doxyfile
  printf '%s\n' "PROJECT_NUMBER = $version" "OUTPUT_DIRECTORY = \"$output\""
} | doxygen -

#!/usr/bin/env bash
# build.sh FOLDER: makes the site of the guides and the reference there, by Doxygen; warnings are errors. It is made of a
# copy, for Doxygen finds no page of a folder whose name has spaces.
set -euo pipefail
mkdir -p -- "$1"
output=$(cd -- "$1" && pwd)
cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../.."
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
copy=$(mktemp -d)
trap 'rm -rf -- "$copy"' EXIT
cp -r --parents README.md CONTRIBUTING.md CHANGELOG.md SECURITY.md docs src/api/PrismoUtl.h src/api/prismoutl.hpp "$copy"
cd -- "$copy"
{
  cat docs/site/Doxyfile
  printf '%s\n' "PROJECT_NUMBER = $version" "OUTPUT_DIRECTORY = \"$output\""
} | doxygen - 2>&1 | sed "s|^$copy/||"

#!/usr/bin/env bash
# same_interface.sh LIBRARY: the library offers all that tests/abi/interface.abi describes, with the same types. More
# functions are no change for those who use it. `same_interface.sh LIBRARY --store` describes the library anew: for a
# release that adds functions, or one whose first number changes.
set -euo pipefail
library=$1
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
stored=$here/interface.abi

command -v abidiff >/dev/null || { echo "SKIPPED: abidiff (package abigail-tools) is not installed"; exit 77; }

if [[ ${2-} == --store ]]; then
  abidw --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only \
    --headers-dir "$here/../../src/api" "$library" | sed -E "s#path='[^']*/src/#path='src/#" >"$stored"
  exit
fi

differs() { ! abidiff --no-added-syms --no-show-locs "$1" "$library"; }

if differs "$stored"; then
  echo "the interface is no longer what $stored describes"
  exit 1
fi

# That this would be noticed, and an addition not:
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
sed "s/name='ConvImage'/name='ConvImageThatWas'/; s/mangled-name='ConvImage'/mangled-name='ConvImageThatWas'/" \
  "$stored" >"$scratch/removed.abi"
differs "$scratch/removed.abi" >/dev/null || { echo "a removed function is not noticed"; exit 1; }
grep -v "<elf-symbol name='ToRaw'" "$stored" | awk '/<function-decl name=.ToRaw./ {skip = 1} !skip {print}
  /<\/function-decl>/ {skip = 0}' >"$scratch/added.abi"
differs "$scratch/added.abi" >/dev/null && { echo "an added function counts as a change"; exit 1; }
echo "the same interface"

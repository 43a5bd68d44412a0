#!/usr/bin/env bash
# run.sh DOCUMENT WORK BUILD PREFIX: runs what a document shows, in a folder of its own, with the library installed in
# ~/prismo. Blocks with tasks of ./dev are left to tasks.sh.
set -euo pipefail
here=$(cd -- "$(dirname -- "$0")" && pwd)
root=$here/../..
DOCUMENT=$(readlink -f -- "$1")
work=$2 build=$3 prefix=$4
export DOCUMENT PIECES=$here/pieces.sh

rm -rf -- "$work"
mkdir -p -- "$work"
cd -- "$work"
HOME=$(mktemp -d)  # without spaces, which pkg-config in a command does not stand
export HOME
trap 'rm -rf -- "$HOME"' EXIT
mkdir build
ln -s "$build" build/release
ln -s "$prefix" "$HOME/prismo"
ln -s "$root/examples" examples
export PATH=$build/tools/prismo:$PATH
export PKG_CONFIG_PATH=$HOME/prismo/lib/pkgconfig LD_LIBRARY_PATH=$HOME/prismo/lib

# Python and Mono are not everywhere; what they would make is left out by the document's own tests.
export PYTHONPATH=$root/python PYTHONDONTWRITEBYTECODE=1
PRISMOUTL_LIBRARY=$(readlink -f "$build/src/libPrismoUtl.so")
export PRISMOUTL_LIBRARY
python3() { /usr/bin/python3 -c 'import numpy' 2>/dev/null || return 0 && /usr/bin/python3 "$@"; }
mcs() { ! type -P mcs >/dev/null || command mcs "$@"; }
mono() { ! type -P mono >/dev/null || command mono "$@"; }
export -f python3 mcs mono

awk -f "$here/script.awk" "$DOCUMENT" >script
bash -euo pipefail -x script

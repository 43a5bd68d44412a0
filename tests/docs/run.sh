#!/usr/bin/env bash
# run.sh DOCUMENT WORK BUILD PREFIX: runs what a document shows, in a folder of its own: every block of sh, in order, with
# the library installed in ~/prismo. A comment "file: NAME" makes a file of the block behind it; the lines of a comment
# "test" are run, too. Tasks of ./dev are left to those who can install packages, and have to exist.
set -euo pipefail
here=$(cd -- "$(dirname -- "$0")" && pwd)
root=$here/../..
DOCUMENT=$(readlink -f -- "$1")
work=$2 build=$3 prefix=$4
export DOCUMENT

tasks=$("$root/dev" help)
for task in $(grep -oE '\./dev [a-z][a-z0-9-]*' "$DOCUMENT" | sort -u | cut -d' ' -f2); do
  grep -qE "^  $task( |$)" <<<"$tasks" || { echo "$DOCUMENT: no task ./dev $task" && exit 1; }
done

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

awk '
  /^<!-- test$/ { hidden = 1; next }
  /^-->$/ { hidden = 0; next }
  /^<!-- file: .* -->$/ { file = $3; next }
  /^```/ && inside { if (file && inside == "file") print "END_OF_BLOCK"; if (inside == "file") file = ""; inside = ""; next }
  /^```/ && file { print "cat >" file " <<\"END_OF_BLOCK\""; inside = "file"; next }
  /^```sh$/ { inside = "sh"; ++blocks; next }
  /^```/ { inside = "other"; next }
  hidden || inside == "file" { print }
  inside == "sh" && !/^\.\/dev / && !/^sudo / { print }
  END { print "echo ran " blocks + 0 " blocks" }' "$DOCUMENT" >script
bash -euo pipefail -x script

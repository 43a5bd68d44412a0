#!/usr/bin/env bash
# manual.sh PAGE TOOL WORK: runs the examples of the manual page, in a folder of its own.
set -euo pipefail
page=$(readlink -f -- "$1")
export PATH=${2%/*}:$PATH
rm -rf -- "$3"
mkdir -p -- "$3"
cd -- "$3"
prismo demo -o . >log
head -c $((1920 * 1080 * 2)) /dev/zero >dump.raw
sed -n '/^\.SH EXAMPLES/,/^\.fi/p' "$page" | sed 's/\\-/-/g' | grep '^prismo ' >script
bash -euo pipefail -x script

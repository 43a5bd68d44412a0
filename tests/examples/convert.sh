#!/usr/bin/env bash
# convert.sh WORK TOOL COMMAND...: runs a converter of the examples, which all write the same picture as the tool does,
# and say on standard error what they cannot read.
set -euo pipefail
work=$1 tool=$2
shift 2
own="$work/of ${1##*/}"
rm -rf -- "$own"
mkdir -p -- "$own"
cd -- "$own"
frame=../demo/frame.rwh picture="the picture.bmp"

"$@" "$frame" "$picture"
"$tool" convert "$frame" -o expected.bmp >log
"$tool" compare "$picture" expected.bmp | tee log
grep -q '^all *identical' log

for wrong in "missing.rwh none.bmp" "$frame missing/none.bmp" "alone"; do
  # shellcheck disable=SC2086
  if "$@" $wrong 2>errors; then echo "succeeded with: $wrong" && exit 1; fi
  grep -qE "usage|${wrong%% *}|missing" errors || { cat errors && exit 1; }
done

#!/usr/bin/env bash
# pictures.sh TOOL WORK: the pictures of the documents are those that scripts/doc-pictures makes.
set -euo pipefail
root=$(cd -- "$(dirname -- "$0")/../.." && pwd)
"$root/scripts/doc-pictures" "$1" "$2"
for picture in "$root"/docs/pictures/*.png; do
  "$1" compare "$picture" "$2/${picture##*/}" | tee "$2/log"
  grep -qE '^all +identical' "$2/log" || { echo "${picture##*/} is out of date: ./dev pictures" && exit 1; }
done

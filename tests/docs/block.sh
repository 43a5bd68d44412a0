#!/usr/bin/env bash
# block.sh FILE SECTION NUMBER: prints an indented block of a document, counted from 1 in its section, without its
# blank lines.
set -euo pipefail
awk -v section="## $2" -v wanted="$3" '
  /^#/ { inside = $0 == section }
  /^    / && inside { if (!block) ++number; block = 1; if (number == wanted) print substr($0, 5) }
  /^[^ ]/ { block = 0 }' "$1" | grep . || { echo "no block $3 in section '$2' of $1" >&2 && exit 1; }

#!/usr/bin/env bash
# block.sh FILE SECTION NUMBER: prints a fenced block of a document, counted from 1 in its section, without its blank
# lines.
set -euo pipefail
awk -v section="## $2" -v wanted="$3" '
  /^```/ && open { open = 0; next }
  /^```/ { open = 1; number += inside; next }
  /^#/ && !open { inside = $0 == section }
  open && inside && number == wanted { print }' "$1" | grep . ||
  { echo "no block $3 in section '$2' of $1" >&2 && exit 1; }

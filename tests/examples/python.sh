#!/usr/bin/env bash
# python.sh WORK TOOL LIBRARY: tests the Python example as the others. Exit code 77: numpy is missing here.
set -euo pipefail
root=$(cd -- "$(dirname -- "$0")/../.." && pwd)
/usr/bin/python3 -c 'import numpy' 2>/dev/null || { echo "skipped: no python3-numpy here" && exit 77; }
export PYTHONPATH=$root/python PRISMOUTL_LIBRARY=$3 PYTHONDONTWRITEBYTECODE=1
"$root/tests/examples/convert.sh" "$1" "$2" /usr/bin/python3 "$root/examples/convert.py"

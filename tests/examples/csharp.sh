#!/usr/bin/env bash
# csharp.sh WORK TOOL PREFIX: compiles the C# example and tests it as the others. Exit code 77: there is no Mono here.
set -euo pipefail
here=$(cd -- "$(dirname -- "$0")" && pwd)
command -v mcs >/dev/null && command -v mono >/dev/null || { echo "skipped: no mono-mcs and mono-runtime here" && exit 77; }
mcs -warnaserror -out:"$1/Convert.exe" "$here/../../examples/csharp/Convert.cs"
LD_LIBRARY_PATH=$(dirname -- "$(find "$3" -name libPrismoUtl.so.1)") "$here/convert.sh" "$1" "$2" mono "$1/Convert.exe"

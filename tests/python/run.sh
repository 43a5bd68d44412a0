#!/usr/bin/env bash
# run.sh WORK LIBRARY TOOL: builds the wheel, installs it into a fresh virtual environment without a network, and runs
# the tests of the installed package there. Exit code 77: Debian's Python packages are missing here.
set -euo pipefail
here=$(cd -- "$(dirname -- "$0")" && pwd)
work=$1 library=$2
export PRISMO_TOOL=$3 PYTHONDONTWRITEBYTECODE=1
python=/usr/bin/python3

for module in numpy setuptools wheel venv ensurepip; do
  "$python" -c "import $module" 2>/dev/null || { echo "skipped: $python has no module $module" && exit 77; }
done

rm -rf -- "$work"
mkdir -p -- "$work"
cd -- "$work"
"$here/../../python/build_wheel.sh" "$library" build/release/wheel "$python" >log 2>&1 || { cat log && exit 1; }

# As README.md says, but for the task of ./dev.
readme() { "$here/../docs/block.sh" "$here/../../README.md" "The library in Python" "$1"; }
export PATH=${python%/*}:$PATH PIP_NO_INDEX=1
unset PRISMOUTL_LIBRARY PYTHONPATH
eval "$(readme 1 | grep -v '^\./dev')" >log
environment=$work/build/environment/bin/python
[[ $("$environment" -c 'import prismoutl; print(prismoutl.__file__)') == "$work/build/environment"/* ]]
"$PRISMO_TOOL" demo -o . >log
readme 2 | "$environment" -W error -

"$environment" -W error -m unittest discover -b -s "$here" "${@:4}"

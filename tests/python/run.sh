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
"$here/../../python/build_wheel.sh" "$library" "$work/wheel" "$python" >"$work/log" 2>&1 || { cat "$work/log" && exit 1; }
"$python" -m venv --system-site-packages "$work/environment"
"$work/environment/bin/python" -m pip -q install --no-index --no-deps "$work"/wheel/prismoutl-*-py3-none-linux_*.whl

cd -- "$work"
unset PRISMOUTL_LIBRARY PYTHONPATH
[[ $("$work/environment/bin/python" -c 'import prismoutl; print(prismoutl.__file__)') == "$work/environment"/* ]]
"$work/environment/bin/python" -W error -m unittest discover -s "$here" "${@:4}"

#!/usr/bin/env bash
# build_wheel.sh LIBRARY FOLDER [PYTHON]: makes FOLDER/prismoutl-VERSION-py3-none-PLATFORM.whl, with LIBRARY inside.
set -euo pipefail
PRISMO_LIBRARY=$(readlink -f -- "$1") && export PRISMO_LIBRARY
mkdir -p -- "$2"
folder=$(cd -- "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
cd -- "$(dirname -- "$(readlink -f -- "$0")")"
"${3:-/usr/bin/python3}" -W ignore setup.py -q egg_info --egg-base "$work" build --build-base "$work/build" \
  bdist_wheel --bdist-dir "$work/wheel" --dist-dir "$folder"

#!/usr/bin/env bash
# consume.sh WORK cmake|pkg-config|tool [PREFIX]: builds and runs a program against an installed tree, by one of the
# ways of finding it, or runs the installed tool. Without PREFIX the library has to be found where the system looks.
set -euo pipefail
here=$(cd -- "$(dirname -- "$0")" && pwd)
work=$1 way=$2 prefix=${3-}
export CMAKE_PREFIX_PATH=$prefix
unset PKG_CONFIG_PATH LD_LIBRARY_PATH
if [[ -n $prefix ]]; then PKG_CONFIG_PATH=$(dirname -- "$(find "$prefix" -name PrismoUtl.pc)") && export PKG_CONFIG_PATH; fi

rm -rf -- "$work"
mkdir -p -- "$work"
cd -- "$work"
case $way in
  cmake)
    cmake -G Ninja -S "$here/consumer" -B . >log || { cat log && exit 1; }
    cmake --build . >log || { cat log && exit 1; }
    ./consumer
    [[ -z $prefix ]] || grep -q "^PrismoUtl_DIR:PATH=$prefix" CMakeCache.txt
    ;;
  pkg-config)
    flags=$(pkg-config --cflags --libs PrismoUtl)
    eval "${CC:-cc} ${CFLAGS-} \"$here/consumer/main.c\" $flags -o consumer"
    # The dynamic linker looks in the system's folders only, unless it is told.
    eval "libraries=$(pkg-config --variable=libdir PrismoUtl)"
    LD_LIBRARY_PATH=${prefix:+$libraries} ./consumer
    ;;
  tool)
    tool=${prefix:-/usr}/bin/prismo
    manual=${prefix:-/usr}/share/man/man1/prismo.1
    [[ $("$tool" --version) == "prismo $(pkg-config --modversion PrismoUtl)" ]]
    "$tool" formats | grep -q BayerRG12
    [[ -s $manual || -s $manual.gz ]]
    ;;
esac
echo "passed: $way"

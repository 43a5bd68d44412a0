#!/usr/bin/env bash
# debian_packages.sh FOLDER: installs the packages in FOLDER on this system, uses them and removes them again.
# Exit code 77: not tested here.
set -euo pipefail
here=$(cd -- "$(dirname -- "$0")" && pwd)
folder=$(cd -- "$1" && pwd)
packages=(libprismoutl1 libprismoutl-dev prismo-tools)

skip() { printf 'skipped: %s\n' "$*" && exit 77; }
command -v dpkg >/dev/null || skip "no dpkg here"
((EUID == 0)) || skip "only root can install packages"
for package in "${packages[@]}"; do
  ! dpkg-query -W "$package" &>/dev/null || skip "$package is installed already; remove it first"
done

debs=()
for package in "${packages[@]}"; do debs+=("$folder/${package}"_*.deb); done
symbols=("$folder"/libprismoutl1-dbgsym_*.d*eb)
work=$(mktemp -d)
trap 'dpkg --purge libprismoutl1-dbgsym "${packages[@]}" &>/dev/null || true; rm -rf -- "$work"' EXIT

dpkg -i "${debs[@]}" "${symbols[@]}" >"$work/log" 2>&1 || { cat "$work/log" && exit 1; }
for way in cmake pkg-config tool; do "$here/consume.sh" "$work/$way" "$way"; done
"$here/completion.sh" /usr

for package in "${packages[@]}"; do [[ -s /usr/share/doc/$package/copyright ]]; done
grep -q 'Apache-2' /usr/share/doc/libprismoutl1/copyright
grep -q 'BSD' /usr/share/doc/prismo-tools/copyright
echo "passed: copyright files"

library=$(readlink -f "$(dpkg -L libprismoutl1 | grep '\.so\.1$')")
id=$(readelf -n "$library" | sed -n 's/.*Build ID: //p')
[[ -s /usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug ]]
echo "passed: debug symbols"

files=$(dpkg -L "${packages[@]}" | sort -u)
dpkg --purge libprismoutl1-dbgsym "${packages[@]}" >"$work/log" 2>&1 || { cat "$work/log" && exit 1; }
while IFS= read -r file; do
  [[ -d $file || ! -e $file ]] || { echo "left behind: $file" && exit 1; }
done <<<"$files"
echo "passed: removed without a trace"

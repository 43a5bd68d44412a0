#!/usr/bin/env bash
# site.sh FOLDER: the site builds without warnings, documents every exported function and leads nowhere else. Exit code
# 77: there is no Doxygen here.
set -euo pipefail
here=$(cd -- "$(dirname -- "$0")" && pwd)
command -v doxygen >/dev/null || { echo "skipped: no doxygen here (./dev setup docs)" && exit 77; }
rm -rf -- "$1"
"$here/../../docs/site/build.sh" "$1"
cd -- "$1"
while read -r name; do
  grep -q "class=\"memname\">.*[ *]$name </td>" group__c__*.html || { echo "no documentation of $name" && exit 1; }
done < <(grep -E '^[A-Za-z]' "$here/../../src/api/exports.txt")
for page in md_*.html index.html group__*.html; do
  grep -oE '(href|src)="[^"#:]+' "$page" | cut -d'"' -f2 | grep -vE '^(https|javascript)$' | sort -u | while read -r target; do
    [[ -e $target ]] || { echo "$page: there is no $target" && exit 1; }
  done
done
echo "$(find . -name '*.html' | wc -l) pages"

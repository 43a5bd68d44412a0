#!/usr/bin/env bash
# tasks.sh: does what the documents say, the tasks of ./dev and sudo included, where the system is thrown away
# afterwards: what README.md shows, then the other documents, then the commands in running text.
# tasks.sh --list: where each of these commands is run; fails if there is one that is run nowhere.
# tasks.sh --one: runs the line of a document that it reads.
set -euo pipefail
tasks=$(readlink -f -- "${BASH_SOURCE[0]}")
here=$(dirname -- "$tasks")
root=$(cd -- "$here/../.." && pwd)
shown='\./dev|sudo|cmake|ctest|pip|apt|prismo|scripts/[a-z-]+ .*'

fail() { printf '%s\n' "$*" >&2; exit 1; }

documents() {
  echo README.md
  (cd -- "$root" && find . -name build -prune -o -name '*.md' -printf '%P\n' | grep -vx README.md | sort)
}

without_comment() { sed -E 's/  +#.*//' "$@"; }

# Lines of blocks of sh.
lines_of() { awk '/^```/ { inside = $0 == "```sh"; next } inside' "$root/$1" | without_comment; }

# Commands in running text, which may go on in the next line, and those of blocks that nobody runs.
mentions_in() {
  awk '
    /^```/ { inside = inside ? "" : $0; next }
    /^<!-- / { hidden = 1 }
    !hidden && inside != "```sh" { print (inside ? "    " : "") $0 }
    /-->$/ { hidden = 0 }' "$root/$1" |
    sed '/^    /{ s/`//g; s/^ *\(.*\)/`\1`/ }' | tr -s '\n ' ' ' |
    grep -oE '`[^`]+`' | tr -d '`' | without_comment | grep -E "^($shown)( |$)" || true
}

# Tests of whole systems, and the build for Arm, take long. They are run by continuous integration, or before a release.
steps() {
  sed -n 's/  *#.*//; /^\.\/dev /p' "$root/.ci/run"
  echo ./dev check-all
  sed -n '/^task_check_all() {/,/^}/s/^  task_//p' "$root/dev" | tr _ - | sed 's|^|./dev |'
}

# What is run for a command: mostly itself. Words in capitals stand for something, what takes hours is made short, and
# measured times are compared with themselves.
what_is_run() {
  case $1 in
    './dev test'* | './dev check'* | './dev coverage'*)
      if grep -qxF -- "$1" <<<"$(steps)"; then echo "left to .ci/run or ./dev check-all" && return; fi ;;&
    './dev test-arm64 '* | './dev build arm64')
      if grep -qxF './dev test-arm64' <<<"$(steps)"; then echo "left to ./dev test-arm64" && return; fi ;;
    'ctest -R windows.'*)
      if grep -qF "NAME ${1##* } " "$root/tests/CMakeLists.txt"; then echo "left to ./dev test-windows" && return; fi ;;
  esac
  case $1 in
    './dev bench' | './dev bench --all'* | './dev bench --json '*) echo "$1 --size 320x240 --rounds 1" ;;
    './dev bench --compare') echo './dev bench --from bench/baseline.json --compare' ;;
    './dev fuzz') echo './dev fuzz log_text 1' ;;
    './dev soak MINUTES') echo './dev soak 1' ;;
    'ctest --test-dir build/'*' -R NAME') echo "${1/NAME/engine.HandOut.ThreadsAreKept} --no-tests=error" ;;
    'ctest -R '*) echo "ctest --test-dir build/release ${1#ctest } --no-tests=error" ;;
    *--gtest_filter=*) echo "$1 | grep -F 'PASSED  ] 1 test.'" ;;
    'prismo COMMAND --help') echo 'prismo convert --help' ;;
    *) echo "$1" ;;
  esac
}

# A command without its end, or a program's name, is run where a block has all of it.
is_in_a_block() {
  [[ $1 != ./dev* ]] && documents | while read -r document; do lines_of "$document"; done |
    awk -v start="$1" 'index($0 " ", start " ") == 1 { found = 1 } END { exit !found }'
}

mentions() {
  documents | while read -r document; do mentions_in "$document"; done | awk '!seen[$0]++' |
    while IFS= read -r command; do
      is_in_a_block "$command" || printf '%s\n' "$command"
    done
}

list() {
  local help command run count=0
  help=$("$root/dev" help)
  while IFS= read -r command; do
    run=$(what_is_run "$command")
    if [[ $command =~ ^\./dev\ ([a-z0-9-]+) ]]; then
      grep -qE "^  ${BASH_REMATCH[1]}( |$)" <<<"$help" || fail "there is no task: $command"
    fi
    [[ ! $run =~ (^|[ =])[A-Z][A-Z]+($|\.|\ ) ]] || fail "what do the capitals stand for? $command"
    printf '%-52s %s\n' "$command" "${run/#"$command"/as it is}"
    ((++count))
  done < <({ documents | while read -r document; do lines_of "$document"; done | grep -E '^(\./dev|sudo) '; mentions; } |
    awk '!seen[$0]++')
  ((count > 20)) || fail "only $count commands found"
}

one() {
  local run
  run=$(what_is_run "$(without_comment)")
  printf '\n== %s\n' "$run" >&2
  case $run in
    'left to '*) ;;
    sudo*) bash -c "$run" < <(yes) ;;  # apt may ask
    *) bash -c "$run" </dev/null ;;
  esac
}

everything() {
  [[ -n ${IN_FRESH_DEBIAN-} ]] || fail "tasks.sh installs packages and writes files: ./dev test-documents"
  export TASKS=$tasks PIECES=$here/pieces.sh DOCUMENT
  local document folder=$root command
  while read -r document; do
    printf '\n==== %s\n' "$document"
    # README.md in the clone, the others in folders where it seems so, with the packages that README.md installed and
    # its Python environment.
    if [[ $document != README.md ]]; then
      folder=$root/build/documents/$document
      rm -rf -- "$folder"
      mkdir -p -- "$folder"
      ln -s "$root"/{dev,build,examples,scripts} "$folder"
    fi
    cd -- "$folder"
    DOCUMENT=$root/$document
    awk -v tasks='"$TASKS" --one' -f "$here/script.awk" "$DOCUMENT" >script
    bash -euo pipefail script
    if [[ $document == README.md ]]; then
      rm -rf build/examples
      HOME=$(mktemp -d)
      . build/environment/bin/activate
    fi
  done < <(documents)
  cd -- "$root"
  printf '\n==== Commands in running text\n'
  mentions | while IFS= read -r command; do one <<<"$command"; done
}

case ${1-} in
  --list) list ;;
  --one) one ;;
  *) everything ;;
esac

#!/usr/bin/env bash
# completion.sh TREE: what the installed completions offer is what the installed prismo knows. Shells that are missing
# here are left out.
set -euo pipefail
tree=$(cd -- "$1" && pwd)
export PATH=$tree/bin:$PATH
share=$tree/share

in_bash() {
  env -i PATH="$PATH" bash --norc -c '
    compopt() { echo some-file; }
    source "$1/bash-completion/completions/prismo"
    shift && COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
    $(complete -p prismo | grep -o " _[a-z]* ") && printf "%s\n" "${COMPREPLY[@]}"' bash "$share" "$@"
}
in_zsh() {
  env -i PATH="$PATH" zsh -fc '
    compadd() { shift && print -l -- "${(@M)@:#${words[CURRENT]}*}"; }
    _files() { print some-file; }
    fpath=("$1"/zsh/{site-functions,vendor-completions}) && autoload -U _prismo
    shift && words=("$@") CURRENT=$#words && _prismo' zsh "$share" "$@"
}
in_fish() {
  local line="${*:1:$#-1} ${*: -1}"
  env -i HOME=/nonexistent PATH="$PATH" fish --no-config -c '
    function __fish_complete_path; echo some-file; end
    source $argv[1]; complete -C $argv[2]' "$share/fish/vendor_completions.d/prismo.fish" "$line" | cut -f1 | grep -v "^${*: -1}\$"
}

# expect SHELL WANTED WORD...: exactly the wanted words complete the last word, wanted as sorted lines
expect() {
  local shell=$1 wanted=$2 got
  shift 2
  got=$("in_$shell" "$@" | sort -u | grep . || true)
  [[ $got == "$wanted" ]] || { printf '%s: %s\noffers %s\nnot    %s\n' "$shell" "$*" "${got//$'\n'/ }" "${wanted//$'\n'/ }" && exit 1; }
}

commands=$(prismo --help | sed '1,/^Subcommands:/d' | awk '{ print $1 }' | grep . | sort)
[[ $(wc -w <<<"$commands") -ge 9 ]]
for shell in bash zsh fish; do
  command -v $shell >/dev/null || { echo "left out: no $shell here" && continue; }
  expect $shell "$commands" prismo ''
  expect $shell $'compare\nconvert' prismo co
  expect $shell $'--help\n--version' prismo --
  for command in $commands; do
    expect $shell "$(prismo "$command" --help | grep -oE -- '--[a-z][a-z-]*' | sort -u)" prismo "$command" --
    expect $shell some-file prismo "$command" some
  done
  expect $shell "$(prismo formats | sed 1d | awk '{ print $1 }' | sort -u)" prismo convert frame.raw --format ''
  expect $shell $'BayerGB10\nBayerGB12\nBayerGB8' prismo convert --format BayerGB
  expect $shell adaptive prismo convert frame.rwh --demosaic a
  expect $shell '' prismo convert frame.rwh --size ''
  echo "passed: $shell"
done

# Words that the completions list themselves are words that prismo takes.
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
head -c 4096 /dev/zero >"$work/f.raw"
probe() { prismo convert "$work/f.raw" --size 64x64 --format BayerRG8 -o "$work/out" "$@" >/dev/null; }
for kind in $(in_bash prismo convert --as '' | grep .); do probe --as "$kind" $([[ $kind != grey ]] || echo --demosaic none); done
for method in $(in_bash prismo convert --demosaic ''); do probe --as png --demosaic "$method"; done
probe --as png --threads "$(in_bash prismo convert --threads '')" --gain "$(in_bash prismo convert --gain '')"
for level in $(in_bash prismo log --level ''); do
  { prismo log "$work/f.raw" --level "$level" 2>&1 || true; } | grep -qv -- --level
done
echo "passed: words"

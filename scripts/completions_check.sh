#!/usr/bin/env bash
# Asks bash, zsh and fish what they complete: completions_check.sh FOLDER-OF-COMPLETIONS FOLDER-OF-PROGRAM
set -euo pipefail
folder=$(realpath "$1")
PATH=$(realpath "$2"):$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
touch app.hex board.dev
mkdir sub
export HOME=$work XDG_CONFIG_HOME=$work XDG_DATA_HOME=$work XDG_CACHE_HOME=$work

program=calvorin
in_bash() { # WORD: what may stand there, a line each
  bash --norc -c '. "$1"; COMP_WORDS=("$2" "${@:3}"); COMP_CWORD=$(($# - 2)); "_${2/-/_}" "$2"
    printf "%s\n" "${COMPREPLY[@]}"' bash "$folder/$program.bash" "$program" "$@"
}
in_fish() {
  fish --no-config -c 'source $argv[1]; complete -C "$argv[2] $argv[3]"' "$folder/$program.fish" "$program" "$*" | cut -f1
}
in_zsh() { # what zsh shows on a terminal of its own, control characters and all, once all of EXPECTED is there
  zsh -f -c '
    zmodload zsh/zpty
    zpty z zsh -f -i
    zpty -w z "PS1=; fpath=($1 \$fpath); autoload -Uz compinit; compinit -u -D; zstyle \":completion:*\" list-prompt \"\"; LISTMAX=1000; stty columns 200; print RE\"\"ADY"
    zpty -r -m z line "*READY*"
    zpty -n -w z "$2"$'"'\\t\\t'"'
    shown=
    repeat 300; do
      while zpty -r -t z line; do shown+=$line; done
      missing=0
      for expected in "${@:3}"; do [[ $shown == *$expected* ]] || missing=1; done
      (( missing )) || break
      sleep 0.1
    done
    print -r -- "$shown"' zsh "$folder" "$program $*" "${EXPECTED[@]}"
}

failed=0
expect() { # SHELL LINE EXPECTED...: each stands among what the shell offers
  local shell=$1 line=$2 offered
  shift 2
  EXPECTED=("$@")
  if [ "$shell" = zsh ]; then # shows values without the name in front of them
    EXPECTED=("${@#"$(grep -oE '^-(OptionsTargetDevice|OptionsPWFillFF|OptionsCOMPort|FileMerge)' <<<"$line" || true)"}")
  fi
  offered=$("in_$shell" $line || true)
  for expected in "${EXPECTED[@]}"; do
    if ! grep -qF -- "$expected" <<<"$offered"; then
      printf 'completions: %s offers for "%s" not "%s" but:\n%s\n' "$shell" "$line" "$expected" "$offered" >&2
      failed=1
    fi
  done
}
for shell in bash fish zsh; do
  expect "$shell" -TargetCh -TargetCheckBlankChip -TargetCheckBlankBlocks
  expect "$shell" -OptionsTargetDeviceVT-B -OptionsTargetDeviceVT-B128
  expect "$shell" --check-device\ bo board.dev
  expect "$shell" -FileMergea -FileMergeapp.hex
  expect "$shell" -OptionsPWFillFF -OptionsPWFillFF0
  expect "$shell" ap app.hex
  port=$(calvorin --list-ports 2>/dev/null | awk 'NR == 1 { print $NF == "-" ? $1 : $NF }')
  [ -z "$port" ] || expect "$shell" -OptionsCOMPort/d "-OptionsCOMPort$port"
done
program=calvorin-sim
for shell in bash fish zsh; do
  expect "$shell" --app- --app-text --app-every --app-echo
  expect "$shell" --device\ VT-A6 VT-A60 VT-A64R
  expect "$shell" --flash-in\ ap app.hex
  expect "$shell" --devices\ s sub
  expect "$shell" --fault\ die die-at-byte
done
[ "$failed" -eq 0 ] && echo "completions: bash, fish and zsh offer what they should"
exit "$failed"

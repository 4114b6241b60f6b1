#!/usr/bin/env bash
# Manual page and completion name exactly the options that --help names.
#   tests/commands/options_test.sh PELAGRIM_SURVEY PACKAGING
set -euo pipefail

program=$1
packaging=$2
failed=0
same() {
  local only
  [ -n "$2" ] || { echo "options: nothing to compare for $1" >&2; failed=1; return; }
  only=$(diff <(sort -u <<<"$2") <(sort -u <<<"$3")) ||
    { printf 'options: %s against the program (<, >):\n%s\n' "$1" "$only" >&2; failed=1; }
}

# The long options of a command: those at the start of a line of its --help.
options() { "$program" "$@" --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -- '--.*'; }
# The same from a section of the manual page: the lines that follow .TP.
in_manual() {
  awk -v section="$1" '
    /^\.SH / { here = $2 == section }
    here && tag && /\\-\\-/ { gsub(/\\/, ""); match($0, /--[a-z-]+/)
                              print substr($0, RSTART, RLENGTH) }
    { tag = /^\.TP/ }' "$packaging/pelagrim-survey.1"
}

# What the completion offers after these words, with the helpers that a shell has.
_init_completion() {
  words=("${line[@]}")
  cword=$((${#words[@]} - 1))
  cur=${words[cword]}
  prev=${words[cword - 1]}
}
_parse_help() { options ${2%--help}; }
_filedir() { :; }
complete() { :; }
. "$packaging/pelagrim-survey.bash-completion"
completed() {
  line=("$program" "$@")
  COMPREPLY=()
  _pelagrim_survey "$program"
  printf '%s\n' "${COMPREPLY[@]}"
}

same "the manual page" "$(in_manual OPTIONS)" "$(options)"
same "the completion" "$(completed --)" "$(options)"
for command in report export; do
  expected=$(options "$command" | grep -vx -- --help)
  same "the manual page of $command" "$(in_manual ${command^^})" "$expected"
  same "the completion of $command" "$(completed "$command" -- | grep -vx -- --help)" "$expected"
done
choices() { "$program" export --help | sed -nE "s/^ +--$1 [A-Z]+:\{(.*)\}.*/\1/p" | tr , '\n'; }
same "the completion of --to" "$(completed export --to '')" "$(choices to)"
# Kinds of two words, and "?", are left out: the user has to quote them.
same "the completion of --kind" "$(completed export --kind '')" \
  "$(choices kind | sed 's/?$//' | grep -E '^[^ ]+$')"
exit $failed

#!/usr/bin/env bash
# The manual page names exactly the options that --help names.
#   tests/commands/options_test.sh PELAGRIM_SURVEY MANUAL
set -euo pipefail

program=$1
manual=$2
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
    { tag = /^\.TP/ }' "$manual"
}

same "the manual page" "$(in_manual OPTIONS)" "$(options)"
for command in report export history; do
  expected=$(options "$command" | grep -vx -- --help)
  same "the manual page of $command" "$(in_manual ${command^^})" "$expected"
done
exit $failed

#!/bin/bash
# What bash offers for pelagrim-survey, against what --help lists, without the completion library.
# Usage: completion_test.sh PROGRAM COMPLETION
program=$(realpath "$1")
here=$(mktemp -d) && cd "$here" || exit 1
trap 'rm -rf "$here"' EXIT
source "$2"
failures=0

# offers EXPECTED WORDS...: what is offered for the last of the words, with "|" between.
offers() {
  local expected=$1 got
  shift
  COMP_WORDS=(pelagrim-survey "$@") COMP_CWORD=$#
  _pelagrim_survey "$program" 2> .errors
  got=$(IFS='|'; echo "${COMPREPLY[*]}")
  if [[ $got != "$expected" || -s .errors ]]; then
    echo "FAILED: $* offers '$got' instead of '$expected' $(cat .errors)"
    failures=$((failures + 1))
  fi
}
# What is between braces after an option in --help.
values_of() { "$program" export --help | sed -n "s/.*$1 [A-Z]*:{\([^}]*\)}.*/\1/p" | tr , '|'; }

options() {
  "$program" "$@" --help | grep -oE '^ +(-[a-z],)?--[a-z-]+' | grep -o -- '--.*' | paste -sd'|'
}
offers "$(options)" --
offers "$(options export)" export --
offers "$(options report)" report --
offers "$(options history)" history --
offers "$("$program" --help | sed -n 's/^ *\(cu8 .*\)/\1/p' | tr ' ' '|')" --format ''
offers "$(values_of --to)" export --to ''
kinds=$(values_of --kind | sed 's/?|/|/g; s/wide NFM/wide\\ NFM/; s/?$/\\?/')
offers "$kinds" export x.survey --kind ''
offers 'am,AM' export --kind am,a
offers "am,${kinds//|/|am,}" export --kind am,
offers 'nfm,wide\ NFM|nfm,wideband' export --kind nfm,wide
offers 'NFM,wide\ NFM' export --kind 'NFM,wide\ '
mkdir evening.survey && touch evening.cu8 'report here'
offers 'evening.cu8|evening.survey|export' e
offers 'evening.survey' --dir eve
offers 'report here|report' rep
exit $((failures > 0))

#!/usr/bin/env bash
# Kills surveys at random moments and checks what the next one finds: every channel of the last safe
# list, none of them twice.
#   tests/survey_dir/kill_test.sh PROGRAM FAILING_DISK.so [KILLS [CHANNELS]]     10 and 5000
set -euo pipefail

program=$(realpath "$1")
disk=$(realpath "$2")
kills=${3:-10}
channels=${4:-5000}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# A list of CHANNELS channels outside the simulated band, so that no dwell changes any of them.
list() {
  echo "# survey.csv format 2: each centre_hz is the middle of its signal's bins"
  echo "centre_hz,width_hz,..."
  awk -v n="$channels" 'BEGIN { for (i = 0; i < n; ++i)
    printf "%d,5000,5000,5000,-20.0,-60.0,1,1,9000,9000,AM?\n", 500000000 + 10000 * i }'
}

survey() { "$program" --quiet --dir "$work/survey" --dwell 0.05 --seed 1 "$@"; }

# How many of the channels are there, and how many are there twice.
count() {
  awk -F, '$1 + 0 >= 500000000 { ++n; if (seen[$1]++) ++twice }
    END { print n + 0, twice + 0 }' "$1"
}

# What is left of a run that is killed after a while, with the arguments as its environment.
kill_one() {
  rm -rf "$work/survey"
  mkdir "$work/survey"
  list >"$work/survey/survey.csv"
  env "$@" "$program" --quiet --dir "$work/survey" --dwell 0.05 --seed 1 --duration 100000 \
    2>/dev/null &
  local run=$!
  sleep "0.$((RANDOM % 5))$((RANDOM % 10))$((RANDOM % 10))"
  kill -9 "$run" 2>/dev/null || true
  wait "$run" 2>/dev/null || true
  local torn
  torn=$(count "$work/survey/survey.csv")
  [[ ${torn% *} == "$channels" ]] || torn_files=$((torn_files + 1))
  survey --duration 0.01 2>/dev/null || true
  local restored
  restored=$(count "$work/survey/survey.csv")
  if [[ $restored != "$channels 0" ]]; then
    echo "FAILED ($*): $torn after the kill, $restored after the next start"
    failures=$((failures + 1))
  fi
}

# expect TEXT VARIABLES...: that the preloaded disk fails, and what the program says about it.
expect() {
  local said
  said=$(env "${@:2}" "$program" --quiet --dir "$work/survey" --dwell 0.05 --duration 0.1 2>&1) ||
    true
  [[ $said == *"$1"* ]] || { echo "FAILED: no '$1' with ${*:2}: $said"; failures=1; }
}
mkdir "$work/survey"
list >"$work/survey/survey.csv"
expect "could not be written whole" "LD_PRELOAD=$disk" FULL_AFTER_BYTES=100000
expect "no safe copy of survey.csv can be kept" "LD_PRELOAD=$disk" FAIL_FLUSH=1

for case in NOTHING=1 "LD_PRELOAD=$disk FULL_AFTER_BYTES=100000" "LD_PRELOAD=$disk FAIL_FLUSH=1"; do
  torn_files=0
  for ((i = 0; i < kills; ++i)); do
    # shellcheck disable=SC2086  # several variables
    kill_one $case
  done
  echo "${case##*so }: $kills kills, survey.csv was cut short by $torn_files"
done
((failures == 0))

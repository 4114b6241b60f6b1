#!/usr/bin/env bash
# Whose list a survey directory holds, and how it is protected.
#   tests/commands/directory_test.sh PROGRAM
set -uo pipefail
. "$(dirname "$0")/expect.sh"

mkdir other
for _ in {1..4000}; do printf '\xc0\x80\x80\xc0\x40\x80\x80\x40'; done >g_433M_1M.cu8
{ head -c 20000 g_433M_1M.cu8; tail -c 12000 /dev/zero | tr '\0' '\200'; } >other/g_433M_1M.cu8
head -c 12000 /dev/zero | tr '\0' '\200' >>other/g_433M_1M.cu8

# A recording is surveyed afresh, and gives the same list; settings stay.
expect 0 "stays on its slice, dwell 7 s, threshold 12 dB, raster 5 kHz" g_433M_1M.cu8 --dwell 7
cp g_433M_1M.survey/survey.csv first.csv
expect 0 "raster 5 kHz (band, sweep, dwell from survey.cfg)" g_433M_1M.cu8
check cmp first.csv g_433M_1M.survey/survey.csv
check [ ! -e g_433M_1M.survey/survey-1.csv ]

# Another one with the same name does not get into its list, unless asked to.
expect 2 "holds the survey of another recording" other/g_433M_1M.cu8
check cmp first.csv g_433M_1M.survey/survey.csv
expect 2 "carry on with that list with" - --format cu8 --sample-rate 1M --frequency 433M \
  --dir g_433M_1M.survey
expect 2 "another recording" --dir g_433M_1M.survey --duration 1
expect 0 "kept as g_433M_1M.survey/survey-1.csv" other/g_433M_1M.cu8 --fresh
check cmp first.csv g_433M_1M.survey/survey-1.csv
expect 0 "survey: resumed" g_433M_1M.cu8 --continue
expect 2 "excludes" g_433M_1M.cu8 --continue --fresh

# A run that ends without a new list gives the old one back, with its source, its links and mode.
back=g_433M_1M.survey
cp first.csv kept.csv && chmod 604 kept.csv && rm "$back"/survey*.csv
ln -s ../kept.csv "$back/survey.csv"
: >e_433M_1M.cu8
expect 1 "holds no samples" e_433M_1M.cu8 --dir "$back" --fresh
expect 1 "holds no samples" e_433M_1M.cu8 --dir "$back" --continue
ln -sf /dev/null "$back/survey.cfg"
expect 1 "keeps no settings" e_433M_1M.cu8 --dir "$back" --fresh --dwell 3
check cmp first.csv kept.csv
check [ ! -e "$back/survey-1.csv" ]
rm "$back/survey.cfg"
expect 0 "is not needed" g_433M_1M.cu8
check [ -L "$back/survey.csv" ]
check [ "$(stat -c %a kept.csv)" = 604 ]

# Only a simulated band goes on with a list whose source is not known.
mkdir old && cp first.csv old/survey.csv
expect 2 "from an unknown source" g_433M_1M.cu8 --dir old
expect 0 "survey: resumed" --dir old --duration 1
check grep -q '"name": "simulated band, seed 1"' old/survey-source.json

# A new raster merges channels: the old list is kept.
cp old/survey.csv before.csv
expect 0 "the raster has changed from 5000 to 100000 Hz" --dir old --duration 1 --raster 100k
check cmp before.csv old/survey-1.csv

# A file that is not a survey, or belongs to somebody else, is left alone.
mkdir table && echo "fruit;pieces" >table/survey.csv
expect 1 "table/survey.csv is not a survey, and surveying would" --dir table --duration 1
check [ "$(cat table/survey.csv)" = "fruit;pieces" ]
if [ "$(id -u)" = 0 ]; then
  mkdir planted && touch planted/victim && ln -s victim planted/survey.cfg
  chown -h 12345 planted/survey.cfg
  expect 1 "planted/survey.cfg belongs to user 12345" --dir planted --duration 1
  ln -s victim planted/band.html && ln -s . planted/way && chown -h 12345 planted/{band.html,way}
  expect 1 "band.html is a link that belongs to user 12345" report old -o planted/band.html
  expect 1 "planted/way belongs to user 12345" --dir planted/way/new --duration 1
  check [ ! -s planted/victim ] && check [ ! -e planted/new ]
  SUDO_UID=12345 expect 0 "" --dir planted --duration 1
fi

# Messages never get into a survey's files, even if the program is started without its streams.
expect 0 "written to" g_433M_1M.cu8 --dir bare
"$program" g_433M_1M.cu8 --dir bare --raster 200k --continue --quiet <&- 2>&-  # which warns
check grep -q '^process' bare/survey.lock

# One run per directory; a report during it sees a whole list.
"$program" --dir busy --realtime --duration 60 --dwell 0.1 >/dev/null 2>&1 &
run=$!
for _ in {1..200}; do [ -s busy/survey.csv ] && break; sleep 0.05; done
expect 3 "busy is being surveyed by process $run on " --dir busy --duration 1
expect 0 "busy.html: " report busy -o busy.html
check [ "$(stat -c %a busy/survey.lock)" = 600 ]  # who can open it can lock it
kill "$run"
wait "$run"
expect 0 "survey: resumed" --dir busy --duration 1

exit $((failures > 0))

#!/bin/bash
# The command line of pelagrim-survey: exit statuses, messages, files left behind.
# Usage: command_line_test.sh PROGRAM
. "$(dirname "$0")/expect.sh"

expect 0 "Usage: pelagrim-survey" --help
expect 0 "  --offset SECONDS  " --help
expect 0 "pelagrim-survey 0." --version
expect 0 "interface   version 3" --plugin-info
expect 0 "repeater" --list-stations
expect 2 "--bogus" --bogus
expect 2 "--band: '146M:144M' is not a range such as" --band 146M:144M
expect 1 "cannot load the plug-in" --plugin ./missing.so
expect 2 "--band: '144:146' is in hertz; did you mean 144M:146M?" --band 144:146
expect 2 "did you mean 868.3M?" noise.cu8 --sample-rate 1M --frequency 868.3
expect 2 "did you mean 430M:440M?" --simulate 430:440
expect 2 "did you mean 2.4M?" --sample-rate 2.4
expect 2 "is not a level in dB from 0 on" --threshold -12
expect 2 "144.000 MHz to 146.000 MHz, is no part of 430.000 MHz to 440.000 MHz; give --band" \
  --simulate 430M:440M
expect 2 "did you mean pelagrim-survey report?" erprot x.survey
expect 1 "cannot open erpotrx" erpotrx  # two swaps and a letter: too far from it
expect 2 "did you mean pelagrim-survey export?" Exprot
expect 2 "did you mean pelagrim-survey --info?" info noise.cu8
expect 1 "cannot open gone.cu8: No such file" gone.cu8
expect 2 "--gain requires --device" --gain 30
expect 2 "excludes --device" --device driver=nothing noise.cu8
expect 1 "pelagrim-survey: " --device driver=nothing
expect 1 "less than 0.500 MHz" --lo-offset 500k
head -c 16387 /dev/urandom > noise.cu8
: > empty.cs16
expect 2 "give --sample-rate" noise.cu8
expect 2 "give --frequency" noise.cu8 --sample-rate 1M
expect 2 $'format      cu8                       from the file name\nrate        1 MS/s' \
  noise.cu8 --sample-rate 1M --info
expect 2 "the centre is not known; give --frequency" noise.cu8 --sample-rate 1M --info
expect 0 "format      cs8 " noise.cu8 --sample-rate 1M --frequency 1M --format CS8 --info
cp noise.cu8 noise.bin
expect 2 "give --format with cu8, " noise.bin --sample-rate 1M --frequency 1M
expect 1 "cannot open gone.cu8: No such file" gone.cu8 --sample-rate 1M --frequency 1M
mkdir folder.wav
expect 1 "folder.wav is a directory; name a recording" folder.wav
expect 1 "no samples" empty.cs16 --sample-rate 1M --frequency 1M
expect 1 "past its end" noise.cu8 --sample-rate 1M --frequency 1M --offset 1
expect 1 "last 1 of its bytes" noise.cu8 --sample-rate 1M --frequency 433M --loop 3
check grep -q "sweep = no" noise.survey/survey.cfg
expect 2 "did you mean pelagrim-survey report noise.survey?" noise.survey
expect 1 "/dev/zero is a device, not a file" report /dev/zero
cp -r noise.survey endless && ln -sf /dev/zero endless/survey.cfg
expect 0 "endless.svg: 0 channels" report endless -o endless.svg
printf 'no row \e[2J\n' >> endless/survey.csv && mv endless $'e\e[2J'
check [ "$("$program" export $'e\e[2J' --to list 2>&1 | grep -c $'\e')" = 0 ]
check "$program" export noise.survey --to csv -o /dev/stdout > table.csv 2> said
check cmp table.csv <("$program" export noise.survey --to csv 2> /dev/null)
check grep -q "/dev/stdout: 0 of 0 channels" said
expect 1 "there is no survey at gone; name" report gone
mkdir piped && cp noise.survey/survey.csv piped && mkfifo piped/survey-labels.txt
output=$(timeout 10 "$program" export piped --to list 2>&1)
check [ "$output" = "pelagrim-survey: piped/survey-labels.txt is a pipe, not a file" ]
expect 1 "noise.cu8 is not a survey" report noise.cu8
expect 2 "ends in .html or .svg" report noise.survey -o band.pdf
expect 0 "band.html: " report noise.survey -o band.html
expect 2 "an empty text" report noise.survey --compare ""
expect 2 "that is the survey itself" export noise.survey --to csv -o \
  noise.survey/../noise.survey/survey.csv
expect 2 "that is the survey itself" export noise.survey/survey.csv --to csv -o \
  noise.survey/survey.cfg
echo 433000000 > noise.list
expect 0 "noise.list: 0 of 0 channels; the old file is now noise.list~" \
  export noise.survey --to list -o noise.list
check grep -q 433000000 noise.list~
expect 0 "noise.list: 0 of 0 channels" \
  export --to list -o noise.list --kind nfm,am --kind wfm noise.survey

# Wrong command lines end with a message and status 2.
while IFS='|' read -r text arguments; do
  expect 2 "$text" $arguments
done << 'TABLE'
--to is required|export noise.survey
--to: pdf not in|export noise.survey --to pdf
'2' is not an activity from 0 to 1|export noise.survey --to csv --min-activity 2
--kind: fm not in|export noise.survey --to csv --kind fm
see pelagrim-survey export --help|export noise.survey more --to csv
see pelagrim-survey report --help|report noise.survey more
give a name that ends in|report noise.survey -o band
TABLE
expect 0 "Usage: pelagrim-survey report" report --help
expect 0 "Formats for --to:" export --help
expect 0 "repeater" --info --list-stations

# The old page is kept beside it, but never replaces something else.
expect 0 "band.html: 0 channels" report noise.survey -o band.html
check [ ! -e band.html~ ]
said=$("$program" report noise.survey -o band.html 2>/dev/null)
check grep -qE "^band.html: 0 channels, [1-9][0-9]{0,2} kB$" <<< "$said"
echo mine > band.html
expect 0 "the old file is now band.html~" report noise.survey -o band.html
check grep -q mine band.html~
echo mine > band.html && ln -sf noise.list band.html~
expect 1 "something else has that name; move it away" report noise.survey -o band.html
check [ "$(cat band.html noise.list~)" = $'mine\n433000000' ]

# Where the survey is: as named, else from the environment, else from the source or in the home.
export HOME=$here/home
expect 1 "there is no survey at $HOME/.orvane/pelagrim;" export --to list
for place in env home/.orvane/pelagrim; do
  mkdir -p $place && cp noise.survey/survey.c?? $place
done
expect 0 "$HOME/.orvane/pelagrim/survey.csv holds no channels" export --to list
HOME= expect 1 "there is no survey at ./survey.csv" report -o place.html
for arguments in "export --to list" "report -o place.html"; do
  ORVANE_SURVEY_DIR=env expect 0 "env/survey.csv holds no channels" $arguments
  ORVANE_SURVEY_DIR=env expect 0 "noise.survey/survey.csv holds no channels" $arguments noise.survey
done
time=(--sample-rate 1M --frequency 433M)
ORVANE_SURVEY_DIR=env expect 1 "survey directory env" noise.cu8 "${time[@]}"
ORVANE_SURVEY_DIR=env expect 1 "survey directory noise.survey" \
  noise.cu8 "${time[@]}" --dir noise.survey

truncate -s -1 noise.cu8
expect 0 "nothing will be kept" noise.cu8 --sample-rate 1M --frequency 433M --sweep --band 1M:2M

# Two runs agree; a third one resumes, and a reader that leaves early does no harm.
expect 0 "survey written to a/survey.csv" --dir a --dwell 0.2
expect 0 "" --dir b --dwell 0.2 --quiet
check cmp a/survey.csv b/survey.csv
check grep -q "dwell_seconds = 0.2" a/survey.cfg
expect 0 "survey: resumed" --dir a
before=$(stat -c %y a/survey.csv)
"$program" --dir a | head -1 > head.txt
check [ "${PIPESTATUS[0]}" = 0 ]
check [ "$before" != "$(stat -c %y a/survey.csv)" ]

# The simulated stations and what was on the air, cut to the run; a stopped run is further below.
repeater='{"name":"repeater","centre_hz":145650000,"width_hz":11200,"level_db":34.0'
expect 0 "$repeater,\"kind\":\"NFM voice\",\"on_air\":0.2631578947368421}" --list-stations --json
expect 0 "$repeater,\"kind\":\"NFM voice\",\"on_air\":0.2857142857142857}" \
  --list-stations --json --irregular
expect 0 "~12 s on, ~30 s off     repeater" --list-stations --irregular
while IFS='|' read -r text arguments; do
  expect 2 "$text" --dir refused $arguments
done << 'TABLE'
--truth is for the simulated band; leave noise.cu8 out|noise.cu8 --truth t.jsonl
--truth is for the simulated band; leave - out|- --truth t.jsonl
--irregular is for the simulated band; leave noise.cu8 out|noise.cu8 --irregular
--truth excludes --device|--device driver=nothing --truth t.jsonl
--irregular excludes --device|--device driver=nothing --irregular
cannot write gone/t.jsonl; name a file in a directory that is there|--truth gone/t.jsonl
cannot write folder.wav; name a file|--truth folder.wav
that name belongs to the survey itself|--truth refused/survey.csv
name a file; standard output shows the survey|--truth -
TABLE
check [ ! -e refused ]
# truth FILE STATION: start and end of its transmissions, in milliseconds after 2024-01-01.
truth() {
  sed -n "s/.*\"$2\".*_ms\":17040\([0-9]*\),.*_ms\":17040\([0-9]*\)}/\1 \2/p" "$1" |
    while read -r from to; do printf '%d-%d ' $((from - 67200000)) $((to - 67200000)); done
}
start=(--dwell 2 --start-time 2024-01-01T00:00:00Z)
expect 0 "regular/t.jsonl: 30 transmissions" --dir regular --truth regular/t.jsonl \
  "${start[@]}" --duration 24.0005
check [ "$(truth regular/t.jsonl 'calling channel')" = "2000-13000 19000-24000 " ]
check [ "$(truth regular/t.jsonl 'long talk')" = "0-24000 " ]
for seed in 5 6 5; do
  expect 0 "" --dir i --fresh --irregular --seed $seed "${start[@]}" --duration 60 --truth i.jsonl
  check grep -q '"long talk".*:1704067200000,"end_unix_ms":1704067260000}' i.jsonl
  check cp i.jsonl i$seed.jsonl
done
check cmp i.jsonl~ i6.jsonl
check [ "$(truth i5.jsonl repeater)" != "$(truth i6.jsonl repeater)" ]

# The same samples as raw, WAV and SigMF give the same survey.
time=(--sample-rate 1M --frequency 433M --start-time 2024-01-01T00:00:00Z)
for _ in {1..4000}; do printf '\xc0\x80\x80\xc0\x40\x80\x80\x40'; done > tone.cu8
{ printf 'RIFF\x24\x7d\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x40\x42\x0f\0\x80\x84\x1e\0\2\0\x08\0'
  printf 'data\0\x7d\0\0'; cat tone.cu8; } > tone.wav
cp tone.cu8 tone.sigmf-data
echo '{"global":{"core:datatype":"cu8","core:sample_rate":1e6,"core:version":"1.0.0"},
  "captures":[{"core:sample_start":0,"core:frequency":433e6}],"annotations":[]}' > tone.sigmf-meta
tar cf packed.sigmf tone.sigmf-meta tone.sigmf-data
expect 0 "known after 1 dwell" tone.cu8 --dir raw "${time[@]}"
check grep -q "^[0-9]" raw/survey.csv
check grep -q '"start_is_guess": false' raw/survey-source.json
for source in tone.wav tone.sigmf-meta tone.sigmf-data packed.sigmf; do
  expect 0 "known after 1 dwell" $source --dir ${source/./-} "${time[@]:2}"
  check cmp raw/survey.csv ${source/./-}/survey.csv
done

# If a recording changes the centre too early for a dwell, the dwells are shorter.
sed 's/}\],"ann/},{"core:sample_start":8000,"core:frequency":435e6}],"ann/' \
  tone.sigmf-meta > two.sigmf-meta
cp tone.sigmf-data two.sigmf-data
expect 0 "known after 2 dwells" two.sigmf-meta
check grep -q "dwell_seconds = 0.008" two.survey/survey.cfg
expect 0 "give --dwell 0.008" two.sigmf-meta --dwell 0.1

# The time stamp of a file is the end of its recording.
truncate -s 240000000 old_433M_1M.cu8
touch -d 2024-01-01T00:02:00Z old_433M_1M.cu8
expect 0 "2024-01-01T00:00:05Z      from the age of its file" old_433M_1M.cu8 --info --offset 5

# A damaged file is surveyed as far as it goes; the run says what was wrong and fails.
head -c 30000 tone.wav > cut.wav
expect 1 "promises 32000 bytes of samples, 29956 are there" cut.wav --frequency 433M
check grep -q "^[0-9]" cut.survey/survey.csv
{ printf '{"global":'; head -c 1000000 /dev/zero | tr '\0' '['; } > bomb.sigmf-meta
expect 1 "nested too deeply" bomb.sigmf-meta
tar cf hostile.sigmf -P --transform 's,^,../,' tone.sigmf-meta tone.sigmf-data
expect 1 "leads out of the archive" hostile.sigmf
expect 1 "makes no sense; give --sample-rate" tone.cu8 --frequency 433M --sample-rate 1e300

mkdir full && ln -s /dev/full full/survey.csv
expect 1 "could not be written whole to full/survey.csv" --dir full --passes 1
check [ "$("$program" --info 2>&1 > /dev/full)" = \
  "pelagrim-survey: cannot write to standard output: No space left on device" ]
expect 1 "cannot open gone␊␛[2J.cu8" $'gone\n\e[2J.cu8' "${time[@]}"

# A record changes nothing in the list, and a recording that is surveyed again is heard once.
"$program" --dir plain --passes 1 --dwell 1 --quiet
"$program" --dir recorded --passes 1 --dwell 1 --quiet --history
check cmp plain/survey.csv recorded/survey.csv
expect 0 "1 run, 3 dwells, 3 s observed" history recorded
expect 0 '"on_air":' history recorded --json
expect 1 "made without --history" history plain
for _ in 1 2; do
  "$program" tone.sigmf-meta --dir again --history --dwell 0.01 --quiet > /dev/null
done
once=$("$program" history again --json | sed -n 's/.*"dwells":\([0-9]*\),.*/\1/p')
check [ "$once" -gt 0 ]
check [ "$(grep -c . <<<"$("$program" history again --json | grep '"run"')")" = 2 ]
check [ "$once" = "$("$program" tone.sigmf-meta --dir fresh --dwell 0.01 --json |
  grep -c '"event":"dwell"')" ]

# The same samples from a pipe give the same survey; the first signal ends a run in order.
expect 0 "" noise.cu8 --dir file "${time[@]}"
"$program" - --format cu8 --dir pipe "${time[@]}" < <(cat noise.cu8) > /dev/null 2>&1
check cmp file/survey.csv pipe/survey.csv
"$program" noise.cu8 --dir one_thread --threads 1 "${time[@]}" > /dev/null
check cmp file/survey.csv one_thread/survey.csv
# A pipe that stays open and silent: the run ends where it has what it wanted, or gives up if asked.
mkfifo open_433M_1M.cu8
exec 7<> open_433M_1M.cu8
cat noise.cu8 >&7
expect 0 "survey written to open.survey/" open_433M_1M.cu8 --dir open.survey \
  --passes 1 --dwell 0.004 --block 1000
exec 7>&-
mkfifo fifo_433M_1M.cu8
expect 1 "nothing has come for 0.2 s" fifo_433M_1M.cu8 --dir nobody --stall-timeout 0.2
"$program" fifo_433M_1M.cu8 --offset 1 > fifo.txt 2>&1 &
waiting=$!
"$program" --dir c --duration 1e9 --truth c.jsonl > run.txt &
survey=$!
for _ in $(seq 100); do grep -q "1 dwell" run.txt && break; sleep 0.1; done
kill -TERM $survey $waiting
wait $survey
check [ $? = 0 ]
wait $waiting
check [ $? = 0 ]
check grep -q "stopped on request" fifo.txt
check grep -q "survey written to c/survey.csv" run.txt
check grep -q '"long talk".*"start_unix_ms":1767225600000,"end_unix_ms":17672' c.jsonl
exit $((failures > 0))

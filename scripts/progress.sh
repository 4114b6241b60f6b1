# Shows the progress of a long step: sourced by ./demo, ./test and others. On a terminal it is one
# line with a percentage, redrawn; elsewhere a line at the start and one at every quarter. The
# step's own output goes to a log, and the end of that is shown if the step fails.

# with_progress TITLE COMMAND ...: the percentage is the last one that the command writes in cmake's
# form, "[ 42%]". Returns the command's status.
with_progress() {
  local title=$1 log status=0
  shift
  log=$(mktemp)
  "$@" 2>&1 | tee "$log" | show_progress "$title" >&2 || status=${PIPESTATUS[0]}
  if [ "$status" -ne 0 ]; then
    tail -n 40 "$log" >&2
    echo "failed: $title" >&2
  fi
  rm -f "$log"
  return "$status"
}

show_progress() {
  local title=$1 line percent=0 quarter=0 terminal=
  [ -t 1 ] && terminal=yes
  if [ $terminal ]; then printf '\r\e[K%s ...' "$title"; else echo "$title ..."; fi
  while IFS= read -r line; do
    [[ $line =~ ^\[\ *([0-9]+)%\] ]] || continue
    percent=${BASH_REMATCH[1]}
    if [ $terminal ]; then
      printf '\r\e[K%s ... %d %%' "$title" "$percent"
    elif ((percent / 25 > quarter && percent < 100)); then
      quarter=$((percent / 25))
      echo "$title ... $percent %"
    fi
  done
  if [ $terminal ]; then printf '\r\e[K'; fi
}

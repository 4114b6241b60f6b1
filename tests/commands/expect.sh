# For the tests of the command line: sourced with the program as $1, it moves to an empty directory
# and brings `expect` and `check`, which count failures.
program=$(realpath "$1")
here=$(mktemp -d) && cd "$here" || exit 1
trap 'rm -rf "$here"' EXIT
unset ORVANE_SURVEY_DIR SUDO_UID
failures=0

# expect STATUS TEXT ARGUMENTS...: the status, and TEXT in what is printed (errors included).
expect() {
  local status=$1 text=$2 output
  shift 2
  output=$(timeout 60 "$program" "$@" 2>&1 </dev/null)
  local got=$?
  if [[ $got != "$status" || $output != *"$text"* ]]; then
    echo "FAILED: pelagrim-survey $*"
    echo "  status $got instead of $status, or no '$text' in: $output"
    failures=$((failures + 1))
  fi
}
check() { "$@" || { echo "FAILED: $*"; failures=$((failures + 1)); }; }

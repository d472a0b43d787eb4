# For the scripts beside it: takes the tool's path, changes to a folder that is deleted at the end.
set -eu
tool=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
  echo "FAILED: $*" >&2
  cat err >&2 || true
  exit 1
}

# told STATUS TEXT COMMAND...: TEXT has to be in standard error, which has to be empty if TEXT is; a
# failure is a single line.
told() {
  local status=$1 text=$2 got=0
  shift 2
  "$@" 2>err || got=$?
  [ "$got" -eq "$status" ] || fail "status $got instead of $status: $*"
  if [ -z "$text" ]; then
    [ ! -s err ] || fail "standard error is not empty: $*"
  else
    grep -qF -- "$text" err || fail "no '$text' on standard error: $*"
    [ $((status % 3)) -eq 0 ] || [ "$(wc -l <err)" -eq 1 ] || fail "not a single line: $*"
  fi
}
# expect STATUS TEXT ARGUMENT...: told, of the tool
expect() { told "$1" "$2" "$tool" "${@:3}" >out; }
# A disk with room for so much in a file: limited KIBIBYTES ARGUMENT...
limited() (
  trap '' XFSZ
  ulimit -f "$1"
  "$tool" "${@:2}"
)

absent() {
  local file
  for file; do [ ! -e "$file" ] || fail "$file is there"; done
}

# wait_for COMMAND... until it succeeds, a minute at most
wait_for() {
  local i
  for i in $(seq 3000); do
    if "$@"; then return; fi
    sleep 0.02
  done
  fail "waited too long for: $*"
}
holds() { [ "$(stat -c %s "$1" 2>/dev/null || echo 0)" -ge "$2" ]; }
frames_in() { "$tool" frames "$1" --csv | tail -n +2 | wc -l; }

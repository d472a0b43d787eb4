#!/usr/bin/env bash
# What velmar-video does at a terminal. Status 77: none can be made here.
# Usage: terminal.sh PATH-OF-VELMAR-VIDEO
. "$(dirname "$0")/lib.sh"

script -qec true /dev/null >out 2>&1 </dev/null || {
  echo "SKIPPED, there are no pseudo-terminals: $(cat out)"
  exit 77
}
expect 0 "" sample drive.img --frames 1 --size 64x64
got=0
script -qec "'$tool' cat drive.img" /dev/null >out </dev/null || got=$?
[ "$got" -eq 2 ] && grep -q "standard output is a terminal" out || fail "status $got: $(cat out)"

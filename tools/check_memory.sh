#!/bin/sh
# check_memory.sh BUILD: no call of a 64-bit build reads what nobody wrote. One case of every driver at each of a few
# sizes, with scratch, fresh memory and destinations that hold nothing, and the tour, under valgrind.
set -eu
bin=$1/bin
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
check() { # NAME COMMAND...
  name=$1
  shift
  valgrind --quiet --error-exitcode=9 "$@" >"$work/log" 2>&1 || {
    tail -n 60 "$work/log" >&2
    echo "$name failed under valgrind" >&2
    exit 1
  }
}
check "a driver" "$bin/zebcv_digest" 1
cases=$(grep -cE '^[0-9a-f]{16} ' "$work/log")
check "the tour" "$bin/tour" --out "$work/tour"
echo "valgrind has nothing to say about $cases drivers and the tour"

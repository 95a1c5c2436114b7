#!/bin/sh
# check_memory.sh BUILD: no call of a 64-bit build reads what nobody wrote. One case of every driver at each of a few
# sizes, with scratch, fresh memory and destinations that hold nothing, and the tour, under valgrind. What it emulates is
# not exact (a fused product of 0 has another sign), so that only its complaints count, not what the drivers find.
set -eu
bin=$1/bin
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
check() { # NAME COMMAND...
  name=$1
  shift
  status=0
  valgrind --quiet --error-exitcode=9 --log-file="$work/complaints" "$@" \
    >"$work/printed" 2>/dev/null || status=$?
  if [ "$status" = 9 ] || [ -s "$work/complaints" ]; then
    head -n 60 "$work/complaints" >&2
    echo "$name: valgrind complains" >&2
    exit 1
  fi
}
check "the drivers" "$bin/zebcv_digest" 1
cases=$(grep -cE '^[0-9a-f]{16} ' "$work/printed")
[ "$cases" -gt 400 ] || { echo "only $cases drivers ran" >&2; exit 1; }
check "the tour" "$bin/tour" --out "$work/tour"
[ "$status" = 0 ] || { echo "the tour failed" >&2; exit 1; }
echo "valgrind has nothing to say about $cases drivers and the tour"

#!/bin/sh
# check_widths.sh DIRECTORY DIRECTORY: two builds compute the same. Every driver's results in a few cases are one number
# in each of them.
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$1/bin/zebcv_digest" >"$work/one"
"$2/bin/zebcv_digest" >"$work/other"
# A digest that never changes would compare nothing.
count=$(cut -d' ' -f1 "$work/one" | sort -u | wc -l)
[ "$count" -gt 300 ] || { echo "only $count different digests" >&2; exit 1; }
if ! diff "$work/one" "$work/other" >"$work/differences"; then
  echo "results differ between $1 and $2:" >&2
  grep '^[<>]' "$work/differences" | awk '{print $3, $4}' | sort -u >&2
  exit 1
fi
echo "$(wc -l <"$work/one") functions compute the same in $1 and $2"

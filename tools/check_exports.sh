#!/bin/sh
# check_exports.sh LIBRARY BASELINE: the library carries the SONAME that the baseline is named after and exports exactly
# the functions that the baseline lists.
set -eu
library=$1
baseline=$2
fail() { echo "$library: $1" >&2; exit 1; }

soname=$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = "$(basename "$baseline")" ] || fail "its SONAME is $soname, the baseline is $baseline"
wanted=$(sed -n 's/^\([^ ]*\) = .*(.*)$/\1/p' "$baseline" | LC_ALL=C sort)
found=$(nm -D --defined-only "$library" | awk '{print $3}' | LC_ALL=C sort)
[ -n "$wanted" ] || fail "the baseline lists no function"
[ "$wanted" = "$found" ] ||
  fail "exports differ from the baseline: $(printf '%s\n%s\n' "$wanted" "$found" | sort | uniq -u | tr '\n' ' ')"

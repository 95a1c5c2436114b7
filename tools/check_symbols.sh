#!/bin/sh
# Holds the shape of the built library: exports exactly the names of the public headers, needs only the core support
# library, libc and libm, has no text relocations, no executable stack, and a table filled by relative relocations.
set -eu
library=$1
entries=$2
fail() { echo "$library: $1" >&2; exit 1; }

wanted=$(sed 's/ENTRY(\(.*\))/\1/' "$entries" | LC_ALL=C sort)
found=$(nm -D --defined-only "$library" | awk '{print $3}' | LC_ALL=C sort)
[ -n "$wanted" ] || fail "the headers declare nothing"
[ "$wanted" = "$found" ] || fail "exports differ from the headers: $(printf '%s\n%s\n' "$wanted" "$found" | sort | uniq -u | tr '\n' ' ')"

needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
for name in $needed; do
  case $name in libzebcore.so.*|libc.so.6|libm.so.6) ;; *) fail "needs $name" ;; esac
done
readelf -d "$library" | grep -q TEXTREL && fail "has text relocations"
readelf -lW "$library" | grep GNU_STACK | grep -q E && fail "wants an executable stack"
readelf -d "$library" | grep SONAME | grep -q 'libzebcvq7\.so\.[0-9]' || fail "has no versioned SONAME"
count=$(printf '%s\n' "$wanted" | wc -l)
relative=$(readelf -rW "$library" | grep -c R_386_RELATIVE)
[ "$relative" -ge "$count" ] || fail "has $relative relative relocations for $count slots"
echo "$count exported functions"

#!/bin/sh
# Installs into an empty folder and builds and runs a C program against nothing but the installed files.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
make -s -C "$root" install PREFIX=/opt/zebcv DESTDIR="$stage" >/dev/null
prefix=$stage/opt/zebcv
for file in lib/libzebcvq7.so lib/libzebcore.so include/zebcv.h include/zebcore.h; do
  [ -e "$prefix/$file" ] || { echo "not installed: $file" >&2; exit 1; }
done
if readelf -d "$prefix/lib/libzebcvq7.so" | grep -E 'RPATH|RUNPATH' | grep -q "$root"; then
  echo "the installed library remembers the build tree" >&2
  exit 1
fi
gcc -m32 -std=c99 -Wall -Werror "$root/examples/first.c" -I"$prefix/include" -L"$prefix/lib" -lzebcvq7 -lzebcore \
  -o "$stage/first"
LD_LIBRARY_PATH=$prefix/lib "$stage/first" | grep -q . || { echo "the example printed nothing" >&2; exit 1; }
echo "installed tree works"

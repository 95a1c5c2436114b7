#!/bin/sh
# Installs under DESTDIR, moves the tree to another place and uses it there.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
fail() { echo "$1" >&2; exit 1; }

make -s -C "$root" install PREFIX=/opt/zebcv DESTDIR="$stage" >/dev/null
mkdir "$stage/moved"
mv "$stage/opt/zebcv" "$stage/moved/here"
tree=$stage/moved/here
for file in lib/libzebcvq7.so lib/libzebcore.so include/zebcv.h include/zebcore.h lib/pkgconfig/zebcv.pc \
  lib/cmake/zebcv/zebcvConfig.cmake; do
  [ -e "$tree/$file" ] || fail "not installed: $file"
done
for header in "$root"/include/zebcv/*.h; do
  cmp -s "$header" "$tree/include/zebcv/$(basename "$header")" || fail "not installed: $header"
done
if remembered=$(grep -rlaF -e "$root" -e "$stage" -e /opt/zebcv "$tree"); then
  fail "a place is remembered in: $remembered"
fi
"$root/tools/check_consumer.sh" "$tree" lib rpath 32
echo "installed tree works where it was moved"

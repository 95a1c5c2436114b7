#!/bin/sh
# check_install.sh [WIDTH...]: installs the widths under one DESTDIR (32), moves the tree to another place and uses it there.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
fail() { echo "$1" >&2; exit 1; }
[ $# -gt 0 ] || set -- 32

for width; do
  make -s -C "$root" install WIDTH="$width" PREFIX=/opt/zebcv DESTDIR="$stage" >/dev/null
done
mkdir "$stage/moved"
mv "$stage/opt/zebcv" "$stage/moved/here"
tree=$stage/moved/here
for header in "$root"/include/*.h "$root"/include/zebcv/*.h; do
  cmp -s "$header" "$tree/${header#"$root/"}" || fail "not installed: $header"
done
if remembered=$(grep -rlaF -e "$root" -e "$stage" -e /opt/zebcv "$tree"); then
  fail "a place is remembered in: $remembered"
fi
for width; do
  case $width in
    32) libraries=lib variant=q7 ;;
    64) libraries=lib/x86_64-linux-gnu variant=x7 ;;
  esac
  for file in libzebcv$variant.so libzebcore.so pkgconfig/zebcv.pc cmake/zebcv/zebcvConfig.cmake; do
    [ -e "$tree/$libraries/$file" ] || fail "not installed: $libraries/$file"
  done
  "$root/tools/check_consumer.sh" "$tree" "$libraries" rpath "$width"
done
echo "installed tree works where it was moved, in $* bits"

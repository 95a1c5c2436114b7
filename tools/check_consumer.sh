#!/bin/sh
# check_consumer.sh TREE LIBDIR HOW WIDTH: builds and runs a C and a C++ program against nothing but the installed tree, through
# pkg-config and through the CMake package. LIBDIR is relative to TREE. HOW the programs find the libraries: "rpath", they
# name the folder of the one that they link; "path", it is in the loader's path, as that of an installed package is.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
tree=$1
libraries=$tree/$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$1" >&2; exit 1; }

width=$4
case $width in
  32) variant=q7 shown=first other=64 package=$tree/lib/cmake/zebcv ;;
  64) variant=x7 shown=first64 other=32 package=$libraries/cmake/zebcv ;;
esac
expected=$(awk -v begin="\$ ./$shown" '$0 == begin {on = 1; next} /^```/ {on = 0} on' "$root/README.md")
[ -n "$expected" ] || fail "the README does not show what the first program prints"
case $3 in
  rpath) loader= linker=-Wl,-rpath,$libraries ;;
  path) loader=$libraries linker= ;;
esac
run() { # PROGRAM EXPECTED
  printed=$(LD_LIBRARY_PATH=$loader "$1") || fail "$1 failed"
  [ "$printed" = "$2" ] || fail "$1 printed: $printed"
}
grown="9 9 9 9 9 9 9 9 9 zebCV AVX2 ($variant)"

export PKG_CONFIG_LIBDIR="$libraries/pkgconfig"
flags=$(pkg-config --cflags --libs "zebcv >= 1.1")
# shellcheck disable=SC2086
gcc -m$width -std=c99 -Wall -Werror "$root/examples/first.c" $flags $linker -o "$work/c"
# shellcheck disable=SC2086
g++ -m$width -Wall -Werror "$root/tests/consumer/consumer.cpp" $flags $linker -o "$work/cpp"
run "$work/c" "$expected"
run "$work/cpp" "$grown"

# The tree is searched as a whole, where both widths may be.
cmake -S "$root/tests/consumer" -B "$work/cmake" -DCMAKE_C_FLAGS=-m$width -DCMAKE_CXX_FLAGS=-m$width \
  -DFIRST="$root/examples/first.c" -DCMAKE_PREFIX_PATH="$tree" >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
cmake --build "$work/cmake" >>"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
run "$work/cmake/consumer_c" "$expected"
run "$work/cmake/consumer_cpp" "$grown"

# Any other word size, and a newer major version, are turned down.
if cmake -S "$root/tests/consumer" -B "$work/other" -DCMAKE_C_FLAGS=-m$other -DCMAKE_CXX_FLAGS=-m$other \
  -DFIRST="$root/examples/first.c" -Dzebcv_DIR="$package" >"$work/log" 2>&1; then
  fail "the CMake package offers itself to a $other-bit program"
fi
if pkg-config --exists "zebcv >= 2.0"; then fail "the pkg-config file claims a version that it is not"; fi

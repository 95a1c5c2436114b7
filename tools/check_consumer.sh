#!/bin/sh
# check_consumer.sh TREE LIBDIR HOW: builds and runs a C and a C++ program against nothing but the installed tree, through
# pkg-config and through the CMake package. LIBDIR is relative to TREE. HOW the programs find the libraries: "rpath", they
# name the folder of the one that they link; "path", it is in the loader's path, as that of an installed package is.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
tree=$1
libraries=$tree/$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$1" >&2; exit 1; }

expected=$(awk '/^\$ \.\/first/ {on = 1; next} /^```/ {on = 0} on' "$root/README.md")
[ -n "$expected" ] || fail "the README does not show what the first program prints"
case $3 in
  rpath) loader= linker=-Wl,-rpath,$libraries ;;
  path) loader=$libraries linker= ;;
esac
run() { # PROGRAM EXPECTED
  printed=$(LD_LIBRARY_PATH=$loader "$1") || fail "$1 failed"
  [ "$printed" = "$2" ] || fail "$1 printed: $printed"
}
grown="9 9 9 9 9 9 9 9 9 zebCV AVX2 (q7)"

export PKG_CONFIG_LIBDIR="$libraries/pkgconfig"
flags=$(pkg-config --cflags --libs "zebcv >= 1.1")
# shellcheck disable=SC2086
gcc -m32 -std=c99 -Wall -Werror "$root/examples/first.c" $flags $linker -o "$work/c"
# shellcheck disable=SC2086
g++ -m32 -Wall -Werror "$root/tests/consumer/consumer.cpp" $flags $linker -o "$work/cpp"
run "$work/c" "$expected"
run "$work/cpp" "$grown"

cmake -S "$root/tests/consumer" -B "$work/cmake" -DCMAKE_C_FLAGS=-m32 -DCMAKE_CXX_FLAGS=-m32 \
  -DFIRST="$root/examples/first.c" -DCMAKE_PREFIX_PATH="$tree" -Dzebcv_DIR="$libraries/cmake/zebcv" >"$work/log"
cmake --build "$work/cmake" >>"$work/log" || { cat "$work/log" >&2; exit 1; }
run "$work/cmake/consumer_c" "$expected"
run "$work/cmake/consumer_cpp" "$grown"

# Any other word size, and a newer major version, are turned down.
if cmake -S "$root/tests/consumer" -B "$work/wide" -DFIRST="$root/examples/first.c" -Dzebcv_DIR="$libraries/cmake/zebcv" \
  >"$work/log" 2>&1; then
  fail "the CMake package offers itself to a 64-bit program"
fi
if pkg-config --exists "zebcv >= 2.0"; then fail "the pkg-config file claims a version that it is not"; fi

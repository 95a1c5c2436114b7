#!/bin/sh
# coverage.sh BUILD: runs the tests of a build that counts and lists the lines of the library that none of them reaches.
# What runs at compile time only, and what follows a return under `if constexpr`, is among them all the same.
set -eu
build=$1
profiles=$build/profiles
rm -rf "$profiles"
mkdir "$profiles"
LLVM_PROFILE_FILE=$(pwd)/$profiles/%p.profraw tools/run_tests.sh "$build" -j"${JOBS:-1}"

find "$profiles" -name '*.profraw' -size +0 >"$profiles/list"  # a program that was killed leaves an empty one
llvm-profdata merge -input-files="$profiles/list" -o "$profiles/all"
counted() { # COMMAND OPTION...
  command=$1
  shift
  llvm-cov "$command" "$build"/lib/libzebcv?7.so -object "$build/bin/zebcv_internal_tests" -instr-profile="$profiles/all" "$@"
}
counted show -show-instantiations=false | awk -v root="$(pwd)/" '
  /^\/.*:$/ { file = substr($0, 1, length($0) - 1); if (index(file, root) == 1) file = substr(file, length(root) + 1) }
  match($0, /^ *[0-9]+\| *0\|/) { printf "%s:%d:%s\n", file, $0, substr($0, RLENGTH + 1) }'
counted report | awk '$1 == "TOTAL" { printf "%d of %d lines of the library are reached by no test\n", $9, $8 }'

#!/bin/sh
# check.sh BUILD GENERATOR OPTION...: makes the documents with the names of all tests at hand.
set -eu
build=$1
shift
names=$(mktemp)
trap 'rm -f "$names"' EXIT
ctest --test-dir "$build" -N | sed -n 's/ *# GetParam.*//; s/^ *Test *#[0-9]*: //p' >"$names"
[ -s "$names" ] || { echo "no tests are known" >&2; exit 1; }
"$@" --tests "$names"

#!/usr/bin/env bash
# run_tests.sh BUILD OPTION...: ctest with what failed, how far it is and the verdict, instead of two lines a test.
set -uo pipefail
build=$1
shift
terminal=
[ -t 1 ] && terminal=1
ctest --test-dir "$build" --output-on-failure "$@" | awk -v terminal="$terminal" '
  function clear() { if (terminal && shown) printf "\r\033[K"; shown = 0 }
  /^ *Start +[0-9]+: / || /^Internal ctest changing/ || /^Test project / { next }
  match($0, /^ *[0-9]+\/[0-9]+ Test +#[0-9]+: /) {
    split($1, place, "/")
    if (!/ Passed +[0-9.]+ sec$/) { clear(); print }
    if (terminal) { printf "\r%d of %d tests", place[1], place[2]; shown = 1 }
    else if (int(4 * place[1] / place[2]) > quarter) { quarter = int(4 * place[1] / place[2]); printf "%d of %d tests\n", place[1], place[2] }
    fflush()
    next
  }
  NF || blank { clear(); print; fflush(); blank = NF }'

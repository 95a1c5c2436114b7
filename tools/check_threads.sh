#!/bin/sh
# check_threads.sh TESTS WATCHED: runs the tests that call the library from several threads, those of one 64-bit build, with
# the library of another one, which the thread checker watches. Which calls race is a matter of the library alone.
set -eu
tests=$1/bin
libraries=$2/lib
checker=$(gcc -print-file-name=libtsan.so)
fail() { echo "$1" >&2; exit 1; }
nm -D --undefined-only "$libraries/libzebcvx7.so" | grep -q __tsan_ || fail "$libraries/libzebcvx7.so is not watched"
# Where the system strews addresses too widely the checker would not start: they stay in place where that may be asked for.
in_place=$(setarch -R true 2>/dev/null && echo setarch -R || true)

run() { # PROGRAM FILTER
  loaded=$(LD_TRACE_LOADED_OBJECTS=1 LD_PRELOAD=$checker LD_LIBRARY_PATH=$libraries "$tests/$1")
  for library in libtsan "$libraries/libzebcvx7"; do
    case $loaded in *"$library"*) ;; *) fail "$1 runs without $library" ;; esac
  done
  # shellcheck disable=SC2086
  printed=$($in_place env ZEBCV_TEST_ANY_STACK=1 LD_PRELOAD="$checker" LD_LIBRARY_PATH="$libraries" "$tests/$1" --gtest_filter="$2" 2>&1) ||
    { echo "$printed" | head -n 60 >&2; fail "$1: the thread checker complains"; }
  case $printed in *"[  PASSED  ] 0 tests"*) fail "$1 has no $2" ;; *"[  PASSED  ]"*) ;; *) fail "$1 did not pass" ;; esac
}
run zebcv_every_function EveryFunction.FromSeveralThreads
run zebcv_tests 'Threads.*'
echo "the thread checker has nothing to say about every function in several threads"

#!/usr/bin/env bash
# Builds the library of a git revision as the release preset does and prints the path of the shared object.
# Sources and build stay in build/against/<commit>; a commit is built once for each width (WIDTH=64).
set -euo pipefail
cd "$(dirname "$0")/.."
commit=$(git rev-parse --verify --quiet "$1^{commit}") || {
  echo "$1 is neither a file nor a revision" >&2
  exit 1
}
tree=build/against/$commit
case ${WIDTH:-32} in
  64) preset=release64 library=$tree/build/$preset/lib/libzebcvx7.so ;;
  *) preset=release library=$tree/build/$preset/lib/libzebcvq7.so ;;
esac
if [ ! -e "$library" ]; then
  mkdir -p "$tree"
  git archive "$commit" | tar -x -C "$tree"
  {
    cmake -S "$tree" --preset $preset -DZEBCV_TESTS=OFF -DZEBCV_BENCH=OFF -DZEBCV_EXAMPLES=OFF
    cmake --build "$tree/build/$preset" -j"${JOBS:-$(nproc)}" --target zebcv
  } > "$tree/build.log" 2>&1 || {
    tail -n 20 "$tree/build.log" >&2
    exit 1
  }
fi
echo "$library"

#!/usr/bin/env bash
# Builds the library of a git revision as the release preset does and prints the path of the shared object.
# Sources and build stay in build/against/<commit>; a commit is built once.
set -euo pipefail
cd "$(dirname "$0")/.."
commit=$(git rev-parse --verify --quiet "$1^{commit}") || {
  echo "$1 is neither a file nor a revision" >&2
  exit 1
}
tree=build/against/$commit
library=$tree/build/release/lib/libzebcvq7.so
if [ ! -e "$library" ]; then
  mkdir -p "$tree"
  git archive "$commit" | tar -x -C "$tree"
  {
    cmake -S "$tree" --preset release -DZEBCV_TESTS=OFF -DZEBCV_BENCH=OFF -DZEBCV_EXAMPLES=OFF
    cmake --build "$tree/build/release" -j"${JOBS:-$(nproc)}" --target zebcv
  } > "$tree/build.log" 2>&1 || {
    tail -n 20 "$tree/build.log" >&2
    exit 1
  }
fi
echo "$library"

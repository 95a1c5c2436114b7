#!/bin/sh
# setup.sh [PACKAGE...]: installs the Debian packages that building, testing and the demo need, and these, where they are missing.
set -eu
wanted="$* g++-multilib cmake make pkgconf googletest libstb-dev clang libclang-rt-14-dev clang-format python-matplotlib-data valgrind"
missing=""
for package in $wanted; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -z "$missing" ] && exit 0

by_hand() {
  echo "$1. Run this as root, then the same command again:" >&2
  echo "  apt-get update && apt-get install -y --no-install-recommends$missing" >&2
  exit 1
}
run=""
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null || by_hand "Packages are missing, and there is no sudo to install them with"
  run="sudo"
fi
echo "Installing:$missing"
log=build/setup.log
# shellcheck disable=SC2086
$run apt-get update -qq >"$log" 2>&1 &&
  $run env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >>"$log" 2>&1 || {
  grep '^E: ' "$log" | head -n 3 >&2 || true
  by_hand "The packages could not be installed ($log)"
}

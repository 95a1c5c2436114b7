#!/bin/sh
# Installs the Debian packages that building, testing and the demo need, where they are missing.
set -eu
wanted="g++-multilib cmake make pkgconf googletest libstb-dev clang libclang-rt-14-dev clang-format python-matplotlib-data"
missing=""
for package in $wanted; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -z "$missing" ] && exit 0
echo "Installing:$missing"
run=""
[ "$(id -u)" = 0 ] || run="sudo"
$run apt-get update -qq
# shellcheck disable=SC2086
DEBIAN_FRONTEND=noninteractive $run apt-get install -y -qq --no-install-recommends $missing >/dev/null

#!/usr/bin/env bash
# Runs README.md from its first line to its last, as it stands there, and compares what it shows.
#
# What builds and tests runs in place. What installs runs in a root of its own, where the system lies beneath what is
# written: nothing stays. That needs root's rights, or user namespaces for all but the Debian packages; what a machine
# does not allow is named and not run. FOREIGN=1 also installs the Debian packages, with i386 as a second architecture.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
fail() { echo "README.md: $1" >&2; exit 1; }

# The fenced blocks by a line of theirs; a block that this script does not know must not pass unseen.
block() {
  awk -v holds="$1" '
    /^```[a-z]+$/ {text = ""; here = 0; inside = 1; next}
    /^```$/ {if (here) {printf "%s", text; exit} inside = 0; next}
    inside {text = text $0 "\n"; if (index($0, holds) == 1) here = 1}' README.md
}
languages=$(sed -n 's/^```\([a-z][a-z]*\)$/\1/p' README.md | tr '\n' ' ')
[ "$languages" = "c console console sh sh sh sh cmake " ] || fail "the blocks are now: $languages"
shown=$(block '$ ./first' | grep -v '^\$ ')
[ -n "$shown" ] || fail "does not show what the first program prints"

# Runs the commands of a block one by one. What stands below one has to be what it prints; ./first prints the same everywhere.
run() {
  local line command='' expected=''
  while IFS= read -r line; do
    case $line in
      '$ '*)
        perform "$command" "$expected"
        command=${line#$ } expected='' ;;
      '') ;;
      *) [ "$1" = console ] && expected=$expected$line$'\n' || { perform "$command" ''; command=$line; } ;;
    esac
  done
  perform "$command" "$expected"
}
perform() {
  local printed expected=${2%$'\n'}
  [ -n "$1" ] || return 0
  echo "\$ $1"
  [ "$1" != ./first ] || expected=$shown
  if [ -z "$expected" ]; then
    eval "$1" </dev/null || fail "failed: $1"
  else
    printed=$(eval "$1" </dev/null) || fail "failed: $1"
    [ "$printed" = "$expected" ] || fail "$1 printed: $printed"
  fi
}

# As a root of its own sees it: $1 tells which blocks, $2 is a folder that goes away.
inside() {
  local scratch=$2
  export HOME=$scratch/home PATH=$scratch/bin:$PATH
  mkdir -p "$HOME" "$scratch/bin"
  printf '#!/bin/sh\nexec "$@"\n' >"$scratch/bin/sudo"
  chmod +x "$scratch/bin/sudo"
  rm -f first first64
  if [ "$1" = packages ]; then
    dpkg --add-architecture i386
    # A second architecture needs a mirror that has the same versions of both.
    if ! timeout 180 sh -c 'apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq libc6:i386' \
      >/dev/null 2>&1; then
      echo "not run, for libc6:i386 does not install here: the lines that install the Debian packages"
      return
    fi
    rm -rf /usr/local/lib/libzeb* /usr/local/include/zeb* /usr/local/lib/pkgconfig/zebcv.pc && ldconfig
    run sh < <(block 'make package')
    return
  fi
  run sh < <(block 'sudo make install')
  { printf 'cmake_minimum_required(VERSION 3.25)\nproject(first C)\nadd_executable(first %s/examples/first.c)\n' "$root"
    block 'find_package'; } >"$scratch/CMakeLists.txt"
  cmake -S "$scratch" -B "$scratch/cmake" -DCMAKE_C_FLAGS=-m32 >/dev/null
  cmake --build "$scratch/cmake" >/dev/null
  [ "$("$scratch/cmake/first")" = "$shown" ] || fail "the program that CMake built prints something else"
  echo "a project with the lines for CMake builds and runs"
  run sh < <(block 'make install PREFIX')
}

# Over /usr/local and /etc, or as a whole over everything, which only root may do.
if [ "${1-}" = --usr-local ]; then
  mount -t tmpfs tmpfs "$2"
  cp -a /etc "$2/etc" 2>/dev/null || true
  mount --bind "$2/etc" /etc
  mount -t tmpfs tmpfs /usr/local
  mkdir -p "$2/scratch"
  inside local "$2/scratch"
  exit
elif [ "${1-}" = --whole ]; then
  mount -t tmpfs tmpfs "$2"
  mkdir "$2/upper" "$2/work" "$2/root"
  mount -t overlay -o "lowerdir=/,upperdir=$2/upper,workdir=$2/work" overlay "$2/root"
  for folder in /proc /dev /sys "$root"; do mount --rbind "$folder" "$2/root$folder"; done
  exec chroot "$2/root" "$root/tools/check_readme.sh" --chrooted
elif [ "${1-}" = --chrooted ]; then
  mkdir -p /tmp/readme
  inside packages /tmp/readme
  exit
fi

for target in $(sed -n 's/^| `make \([a-z-]*\).*/\1/p; s/.*`, `make \([a-z-]*\)`.*/\1/p' README.md); do
  make -n "$target" >/dev/null 2>&1 || fail "there is no make $target"
done

run console < <(block '$ ./first')
run console < <(block '$ make WIDTH=64')
run sh < <(block 'make demo' | sed 's/ *#.*//')
[ -s out/index.html ] || fail "make demo writes no out/index.html"
rm -f first first64

scratch=$(mktemp -d)
trap 'rmdir "$scratch"' EXIT
map=-Umr
[ "$(id -u)" != 0 ] || map=-m
if unshare $map mount -t tmpfs tmpfs "$scratch" 2>/dev/null; then
  unshare $map "$0" --usr-local "$scratch"
else
  echo "not run, for there are no namespaces: the lines that install"
fi
if [ -z "${FOREIGN-}" ]; then
  echo "not run without FOREIGN=1, for they need a second package architecture: the lines that install the Debian packages"
elif [ "$map" = -m ] && unshare -m mount -t tmpfs tmpfs "$scratch" 2>/dev/null; then
  unshare -m "$0" --whole "$scratch"
else
  echo "not run, for only root may: the lines that install the Debian packages"
fi
rm -f first first64
echo "README.md does what it says"

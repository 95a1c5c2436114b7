#!/bin/sh
# check_side_by_side.sh DIRECTORY DIRECTORY: dpkg installs the Debian packages of both widths, those for 32 bits in the first
# folder, beside each other into a root of their own, and programs of either width find and use theirs.
set -eu
PATH=$PATH:/usr/sbin:/sbin
root=$(cd "$(dirname "$0")/.." && pwd)
system=$(mktemp -d)
trap 'rm -rf "$system"' EXIT
fail() { echo "$1" >&2; exit 1; }

# All that the system has is the C library of both architectures.
mkdir -p "$system/var/lib/dpkg/updates" "$system/var/lib/dpkg/info"
for architecture in i386 amd64; do
  printf '%s\n' 'Package: libc6' 'Status: install ok installed' "Architecture: $architecture" 'Multi-Arch: same' \
    'Version: 2.36' 'Maintainer: nobody' 'Description: none' ''
  : >"$system/var/lib/dpkg/info/libc6:$architecture.list"
done >"$system/var/lib/dpkg/status"
dpkg --root="$system" --force-not-root --add-architecture i386
dpkg --root="$system" --force-not-root -i "$1"/*.deb "$2"/*.deb >"$system/log" 2>&1 || {
  cat "$system/log" >&2
  fail "the packages of both widths do not install beside each other"
}
for package in libzebcvq7-1:i386 libzebcv-dev:i386 libzebcvx7-1:amd64 libzebcv-dev:amd64; do
  status=$(dpkg-query --admindir="$system/var/lib/dpkg" -W -f='${Status}' "$package" 2>/dev/null) || status="not installed"
  [ "$status" = "install ok installed" ] || fail "$package: $status"
done
"$root/tools/check_consumer.sh" "$system/usr" lib/i386-linux-gnu path 32
"$root/tools/check_consumer.sh" "$system/usr" lib/x86_64-linux-gnu path 64
# What one width leaves behind is still whole.
dpkg --root="$system" --force-not-root -r libzebcv-dev:i386 libzebcvq7-1:i386 >"$system/log" 2>&1 || {
  cat "$system/log" >&2
  fail "the packages for 32 bits cannot be removed"
}
"$root/tools/check_consumer.sh" "$system/usr" lib/x86_64-linux-gnu path 64
echo "packages of both widths work beside each other"

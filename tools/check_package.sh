#!/bin/sh
# check_package.sh DIRECTORY WIDTH: looks into the Debian packages there and uses what they hold.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
packages=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$1" >&2; exit 1; }
field() { dpkg-deb -f "$1" "$2"; }
width=$2
case $width in
  32) architecture=i386 triplet=i386-linux-gnu variant=q7 ;;
  64) architecture=amd64 triplet=x86_64-linux-gnu variant=x7 ;;
esac

version=$(sed -n 's/^project(zebcv VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
major=${version%%.*}
name=libzebcv$variant-$major
runtime=$packages/${name}_${version}_$architecture.deb
development=$packages/libzebcv-dev_${version}_$architecture.deb
for package in "$runtime" "$development"; do
  [ -f "$package" ] || fail "no package $package"
  [ "$(field "$package" Architecture)" = $architecture ] || fail "$package is not for $architecture"
  [ "$(field "$package" Version)" = "$version" ] || fail "$package has another version"
  [ "$(field "$package" Multi-Arch)" = same ] || fail "$package does not stand beside its like for another architecture"
  dpkg-deb -x "$package" "$work/$(basename "$package" .deb)"
  dpkg-deb --fsys-tarfile "$package" | tar -tv | grep -v ' root/root ' && fail "$package has files that are not root's"
  dpkg-deb --fsys-tarfile "$package" | tar -t | grep -vE '^\./(usr/((lib|include)/.*|share/(doc/([^/]*/(changelog\.gz)?)?)?)?)?$' && fail "$package has stray files"
done
[ "$(field "$development" Depends)" = "$name (= $version)" ] || fail "libzebcv-dev needs its own library only"

# The runtime package: real files and SONAME links, nothing of a developer's. The other one: the rest.
inside=$work/${name}_${version}_$architecture/usr/lib/$triplet
listed=$(cd "$inside" && find . ! -type d | LC_ALL=C sort | tr '\n' ' ')
[ "$listed" = "./libzebcore.so.$major ./libzebcore.so.$version ./libzebcv$variant.so.$major ./libzebcv$variant.so.$version " ] ||
  fail "the runtime package holds: $listed"
for library in "$inside"/*."$version"; do
  readelf -d "$library" | grep -qE 'RPATH|RUNPATH' && fail "$library has a search path"
  readelf -SW "$library" | grep -q '\.symtab' && fail "$library is not stripped"
done
ctrl=$work/control
dpkg-deb -e "$runtime" "$ctrl"
grep -q '^activate-noawait ldconfig$' "$ctrl/triggers" || fail "the linker's cache is not renewed"

for library in libzebcv$variant libzebcore; do
  grep -qxF "$library $major $name (>= $version)" "$ctrl/shlibs" || fail "the shlibs do not name $library"
done
for changelog in "$work"/*/usr/share/doc/*/changelog.gz; do
  first=$(gzip -dc "$changelog" | head -n 1)
  [ "$first" = "zebcv ($version) unstable; urgency=medium" ] || fail "the newest entry of $changelog is: $first"
done

# The stated libc is the oldest that has every symbol version in use.
used=$(readelf -VW "$inside"/*."$version" | grep -oE 'GLIBC_[0-9.]+' | sed 's/GLIBC_//' | sort -V | tail -n 1)
[ "$(field "$runtime" Depends)" = "libc6 (>= $used)" ] || fail "depends on $(field "$runtime" Depends), uses libc $used"

mkdir "$work/tree"
cp -a "$work/${name}_${version}_$architecture/." "$work/libzebcv-dev_${version}_$architecture/." "$work/tree/"
"$root/tools/check_consumer.sh" "$work/tree/usr" lib/$triplet path "$width"
echo "packages work: $(basename "$runtime") $(basename "$development")"

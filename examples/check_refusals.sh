#!/bin/sh
# check_refusals.sh TOUR: what the tour cannot use it refuses with a sentence and a status that is not 0, and it leaves
# neither a part of a gallery nor a touched older one.
set -eu
tour=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "$1" >&2; exit 1; }

refused() { # PHOTO OUT SENTENCE
  if "$tour" "$1" --out "$2" >printed 2>said; then fail "took $1 to $2"; fi
  grep -qF "$3" said || fail "says of $1 to $2: $(cat said)"
  [ "$(wc -l <said)" = 1 ] || fail "says more than a sentence of $1"
  [ ! -e "$2.draft" ] && [ ! -e "$2/photograph.png" ] || fail "left something of $1 in $2"
}

# Black pictures of one bit a pixel.
echo iVBORw0KGgoAAAANSUhEUgAAAAEAAAABAQAAAAA3bvkkAAAACklEQVR42mNgAAAAAgAB5Sfe/AAAAABJRU5ErkJggg== |
  base64 -d >dot.png
echo iVBORw0KGgoAAAANSUhEUgAATiAAAAACAQAAAACVW9GNAAAAHElEQVR42u3BMQEAAADCoPVPbQo/oAAAAACAvwETigABOU+akgAAAABJRU5ErkJggg== |
  base64 -d >ribbon.png
echo iVBORw0KGgoAAAANSUhEUgAAAEYAAABGAQAAAABZVd8pAAAAD0lEQVR42mNgGAWjYGgCAAK8AAEBGqtHAAAAAElFTkSuQmCC |
  base64 -d >'my holiday.png'
: >empty.jpg
echo words >words.jpg
mkdir older
echo 'an older gallery' >older/index.html

refused dot.png out 'dot.png has 1 x 1 pixels; needed are'
refused ribbon.png out 'ribbon.png has 20000 x 2 pixels; needed are'
refused missing.jpg out 'cannot open missing.jpg: No such file or directory'
refused empty.jpg out 'empty.jpg is empty'
refused words.jpg out 'words.jpg is no JPEG or PNG file that can be decoded'
refused . out '.: Is a directory'
refused 'my holiday.png' words.jpg/out 'cannot write words.jpg/out'
# Files of at most 8 KiB stand for a disk that is full before the gallery is complete.
if (ulimit -f 16; trap '' XFSZ; "$tour" 'my holiday.png' --out older >printed 2>said); then fail "fits on a full disk"; fi
grep -qF 'cannot write older.draft/' said || fail "says of a full disk: $(cat said)"
[ "$(ls)" = "$(printf '%s\n' dot.png empty.jpg 'my holiday.png' older printed ribbon.png said words.jpg)" ] || fail "left: $(ls)"
[ "$(ls older) $(cat older/index.html)" = "index.html an older gallery" ] || fail "touched the older gallery"
# A black picture with a blank in its name is a picture, and an older gallery is replaced by a whole one.
"$tour" 'my holiday.png' --out older >printed || fail "refuses a black picture"
[ -s older/hero.png ] && grep -q '<h1>zebCV' older/index.html || fail "did not replace the older gallery"
"$tour" --help | grep -q '^usage: tour' || fail "--help does not help"

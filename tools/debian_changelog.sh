#!/bin/sh
# debian_changelog.sh CHANGELOG.md: the versions of the list of changes in the form of a Debian changelog.
# "## 1.1.0, 2026-11-22" opens a version, "- text" is an entry.
set -eu
maintainer="zebCV developers <zebcv@localhost>"
flush() {
  [ -z "$item" ] || echo "$item" | fold -s -w 74 | sed '1s/^/  * /; 2,$s/^/    /; s/ *$//'
  item=
}
close() {
  flush
  [ -z "$date" ] || printf '\n -- %s  %s\n' "$maintainer" "$(LC_ALL=C date -u -d "$date" '+%a, %d %b %Y %H:%M:%S +0000')"
}
date=
item=
while IFS= read -r line; do
  case $line in
    '## '*)
      close
      [ -z "$date" ] || echo
      version=${line#\#\# }
      date=${version#*, }
      printf 'zebcv (%s) unstable; urgency=medium\n\n' "${version%%,*}"
      ;;
    '- '*)
      flush
      item=${line#- }
      ;;
    '  '*) item="$item ${line#  }" ;;
  esac
done <"$1"
close

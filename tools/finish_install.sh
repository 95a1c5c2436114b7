#!/bin/sh
# finish_install.sh PREFIX WIDTH: after an installation into the running system, makes the loader look again, or tells what a
# program needs to find the libraries in a place of their own.
set -eu
PATH=$PATH:/usr/sbin:/sbin
libraries=$1/lib name=libzebcvq7 compile="gcc -m32"
if [ "$2" = 64 ]; then libraries=$1/lib/x86_64-linux-gnu name=libzebcvx7 compile=gcc; fi
searched() { ldconfig -vNX 2>/dev/null | grep -q "^$libraries:"; }
if searched && [ "$(id -u)" = 0 ]; then ldconfig; fi
if ldconfig -p | grep -q "=> $libraries/$name\.so\."; then
  echo "installed in $1; programs find the libraries by themselves"
  exit 0
fi
if searched; then
  echo "installed in $1; run ldconfig as root before programs start"
  exit 0
fi
cat <<END
installed in $1, where the loader does not look. Build programs like this:
  export PKG_CONFIG_PATH=$libraries/pkgconfig
  $compile first.c \$(pkg-config --cflags --libs zebcv) -Wl,-rpath,$libraries -o first
END

#!/bin/sh
# check_symbols.sh LIBRARY SUPPORT ENTRIES PROGRAM...
#
# Holds the shape of the built library: exports exactly the names of the public headers, needs only the support library,
# libc and libm, has no text relocations, no executable stack, and a table filled by relative relocations only. What runs
# before the processor has been looked at, the support library, the load-time initialiser, the version and the exported
# stubs, has no instruction beyond SSE2. No library or program searches the current folder.
set -eu
library=$1
support=$2
entries=$3
shift 3
fail() { echo "$1" >&2; exit 1; }
# The variant's code ends the library's name; in 64 bits a pointer is moved or fetched by relocations of other names.
variant=$(basename "$library" | sed 's/^libzebcv\(.*\)\.so.*/\1/')
case $(readelf -h "$library") in
  *ELF32*) kind=R_386_ ;;
  *) kind=R_X86_64_ ;;
esac

wanted=$(sed 's/ENTRY(\(.*\))/\1/' "$entries" | LC_ALL=C sort)
found=$(nm -D --defined-only "$library" | awk '{print $3}' | LC_ALL=C sort)
[ -n "$wanted" ] || fail "the headers declare nothing"
[ "$wanted" = "$found" ] || fail "exports differ from the headers: $(printf '%s\n%s\n' "$wanted" "$found" | sort | uniq -u | tr '\n' ' ')"

# ---- What the loader does ----
for file in "$library" "$support"; do
  for name in $(readelf -d "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
    case $name in libzebcore.so.*|libc.so.6|libm.so.6) ;; *) fail "$file needs $name" ;; esac
  done
  readelf -d "$file" | grep -q TEXTREL && fail "$file has text relocations"
  readelf -lW "$file" | grep GNU_STACK | grep -q E && fail "$file wants an executable stack"
  readelf -d "$file" | grep SONAME | grep -q '\[lib.*\.so\.[0-9]*\]' || fail "$file has no versioned SONAME"
done
# RELATIVE moves a pointer, GLOB_DAT and JUMP_SLOT fetch what libzebcore, libc and libm export.
other=$(readelf -rW "$library" | grep -o "$kind.*" | grep -vE "^$kind(RELATIVE|GLOB_DAT|JUMP_SLOT)" || true)
[ -z "$other" ] || fail "$library has relocations of other kinds: $other"
readelf -rW "$library" | awk '/_(GLOB_DAT|JUMP_SLOT)/ {print $5}' | grep '^zeb' |
  grep -vE '^zeb(Malloc|Free|GetMaxCacheSizeB|GetCpuFeatures|GetEnabledCpuFeatures)(@.*)?$' && fail "$library binds these late"
count=$(printf '%s\n' "$wanted" | wc -l)
relative=$(readelf -rW "$library" | grep -c "${kind}RELATIVE")
[ "$relative" -ge "$count" ] || fail "$library has $relative relative relocations for $count slots"
for file in "$library" "$support" "$@"; do
  path=$(readelf -d "$file" | sed -n 's/.*(R\(UN\)\{0,1\}PATH).*\[\(.*\)\]/:\2:/p')
  case $path in *::*) fail "$file searches the current folder: $path" ;; esac
done

# ---- What any processor can run ----
# Extensions behind SSE2: VEX and EVEX forms begin with v; the others by name.
beyond='^(v[a-z0-9]+|addsubp[ds]|h(add|sub)p[ds]|lddqu|mov(sh|sl|d)dup|ph(add|sub)[a-z]+|pmaddubsw|pmulhrsw|pshufb|psign[bwd]'
beyond="$beyond"'|palignr|pabs[bwd]|pmul(dq|ld)|dpp[ds]|mpsadbw|(p?blend[a-z]+)|pm(in|ax)(sb|sd|uw|ud)|round[ps][sd]'
beyond="$beyond"'|insertps|extractps|p(insr|extr)[bdq]|pmov[sz]x[a-z]+|ptest|pcmp(eqq|gtq|[ei]str[im])|packusdw|movntdqa|crc32[a-z]?'
beyond="$beyond"'|popcnt|lzcnt|tzcnt|andn|bextr|bls[a-z]+|bzhi|pdep|pext|mulx|rorx|sarx|shlx|shrx|movbe|aes[a-z]+|pclmul[a-z]*)$'
# Prints function and instruction for each that stands in the functions of the awk condition and is beyond SSE2.
instructions() {
  objdump -d --no-show-raw-insn "$1" | awk -v beyond="$beyond" -v names="$2" '
    BEGIN { n = split(names, list, "\n"); for (i = 1; i <= n; ++i) listed[list[i]] = 1 }
    /^[0-9a-f]+ <.*>:$/ { name = substr($2, 2, length($2) - 3); looked = names == "" || name in listed; seen += looked; next }
    looked && /^ *[0-9a-f]+:/ { if ($2 ~ beyond && $2 !~ /^ver[rw]$/) print name ": " $2; ++all }
    END { print seen, all + 0 }'
}
early="$wanted
${variant}_ownInitialise
${variant}_zebcvGetLibVersion
_ZN3zeb15detectProcessorEv"
looked=$(instructions "$support" "")
case $looked in *:*) fail "$support: $looked" ;; esac
[ "${looked#* }" -gt 100 ] || fail "$support: only $looked instructions were seen"
looked=$(instructions "$library" "$early")
case $looked in *:*) fail "$library: $looked" ;; esac
[ "${looked% *}" -eq "$((count + 3))" ] || fail "$library: saw ${looked% *} of $((count + 3)) functions that run on any processor"
# The same search does find the kernels.
case $(instructions "$library" "") in *:*) ;; *) fail "no kernel uses vectors, or the search is blind" ;; esac
echo "$count exported functions"

#!/usr/bin/env bash
# Whether a built libPixTurn.so can go into a Xojo application's plug-ins as it
# is: a library for MACHINE (EM_386, EM_X86_64, EM_ARM or EM_AARCH64) that shows
# the host REALPluginMain alone, needs nothing but the C library (libc, libm,
# the dynamic loader, and libdl/libpthread where a C library splits them out),
# looks in no folder of its own for them (no RUNPATH or RPATH), and asks for no
# symbol version newer than GLIBC_2.17, so that it loads on any Linux of the last
# ten years. readelf reads every machine's ELF files, so this runs for the cross
# builds too.
# Usage: scripts/check-library.sh LIBRARY MACHINE; prints what is wrong, exits 1
# if anything is.
set -euo pipefail
library="$1"
machine="$2"
newest_glibc="2.17"
problems=0
problem() {
  echo "$library: $*" >&2
  problems=1
}

header=$(readelf -h "$library")
declare -A machine_names=([EM_386]="Intel 80386" [EM_X86_64]="Advanced Micro Devices X86-64" [EM_ARM]="ARM"
  [EM_AARCH64]="AArch64")
expected_name="${machine_names[$machine]:?unknown machine $machine}"
grep -qE "^ *Machine: +$expected_name\$" <<<"$header" ||
  problem "machine is '$(sed -n 's/^ *Machine: *//p' <<<"$header")', not $machine"
grep -qE '^ *Type: +DYN' <<<"$header" || problem "not a shared library"

# Defined symbols of global or weak binding in the dynamic symbol table.
exports=$(readelf --dyn-syms -W "$library" | awk '$1 ~ /^[0-9]+:$/ && $5 != "LOCAL" && $7 != "UND" { print $8 }' |
  sed 's/@.*//' | sort -u)
[ "$exports" = "REALPluginMain" ] || problem "exports '$(tr '\n' ' ' <<<"$exports")' instead of REALPluginMain alone"

dynamic=$(readelf -d -W "$library")
while read -r needed; do
  case "$needed" in
    libc.so.6 | libm.so.6 | libdl.so.2 | libpthread.so.0 | ld-linux*.so.*) ;;
    *) problem "needs $needed" ;;
  esac
done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p' <<<"$dynamic")
if grep -qE '\((RUNPATH|RPATH)\)' <<<"$dynamic"; then
  problem "looks for libraries in $(grep -E '\((RUNPATH|RPATH)\)' <<<"$dynamic" | sed 's/.*\[\(.*\)\]$/\1/')"
fi

newest=$( (readelf -V -W "$library" | grep -oE 'GLIBC_[0-9]+(\.[0-9]+)+' | sed 's/GLIBC_//'; echo 0) | sort -V | tail -n 1)
if [ "$(printf '%s\n%s\n' "$newest" "$newest_glibc" | sort -V | tail -n 1)" != "$newest_glibc" ]; then
  problem "asks for GLIBC_$newest: $(readelf --dyn-syms -W "$library" | grep -oE "[^ ]*@GLIBC_$newest\b" | sort -u | tr '\n' ' ')"
fi
exit "$problems"

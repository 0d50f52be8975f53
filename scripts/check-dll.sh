#!/usr/bin/env bash
# The Windows counterpart of scripts/check-library.sh: whether a built
# PixTurn.dll can go into a Xojo application's plug-ins as it is: a DLL for
# MACHINE (i386 or x86-64) that exports REALPluginMain alone and imports from
# the system's DLLs only (KERNEL32 and the C runtime, msvcrt or the UCRT), so
# that no C++, GCC or thread runtime has to travel with it. objdump reads both
# machines' PE files.
# Usage: scripts/check-dll.sh DLL MACHINE; prints what is wrong, exits 1 if
# anything is.
set -euo pipefail
library="$1"
machine="$2"
problems=0
problem() {
  echo "$library: $*" >&2
  problems=1
}

declare -A formats=([i386]=pei-i386 [x86-64]=pei-x86-64)
expected_format="${formats[$machine]:?unknown machine $machine}"
headers=$(objdump -p "$library")
format=$(sed -n 's/.*file format \(.*\)$/\1/p' <<<"$headers" | head -n 1)
[ "$format" = "$expected_format" ] || problem "format is '$format', not $expected_format ($machine)"
grep -qE '^\s+DLL$' <<<"$headers" || problem "not a DLL"

# The names of the export table: the lines after its heading up to a blank one.
exports=$(awk '/^\[Ordinal\/Name Pointer\] Table/ { listing = 1; next } listing && NF == 0 { listing = 0 }
  listing { print $NF }' <<<"$headers" | sort -u)
[ "$exports" = "REALPluginMain" ] || problem "exports '$(tr '\n' ' ' <<<"$exports")' instead of REALPluginMain alone"

while read -r imported; do
  case "${imported,,}" in
    kernel32.dll | msvcrt.dll | ucrtbase.dll | api-ms-win-crt-*.dll) ;;
    *) problem "imports from $imported" ;;
  esac
done < <(sed -n 's/^\s*DLL Name: //p' <<<"$headers")
exit "$problems"

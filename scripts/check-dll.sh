#!/usr/bin/env bash
# The Windows counterpart of scripts/check-library.sh: whether a built
# PixTurn.dll can go into a Xojo application's plug-ins as it is: a DLL for
# MACHINE (i386, x86-64 or arm64) that exports REALPluginMain alone and imports
# from the system's DLLs only (KERNEL32 and the C runtime, msvcrt or the UCRT),
# so that no C++, GCC or thread runtime has to travel with it. llvm-readobj
# reads the three machines' PE files (GNU objdump has no arm64 PE).
# An arm64 DLL is also checked for its reads of x18, which holds the thread's
# block on Windows and is an ordinary register on Linux: the C runtime's
# start-up reads it once, and the simulated host's PE loader gives that call a
# block of its own; a read anywhere else would meet whatever Linux code left in
# the register, so there must be no other (simhost/plugin_library_pe.cpp).
# Usage: scripts/check-dll.sh DLL MACHINE; prints what is wrong, exits 1 if
# anything is.
set -euo pipefail
library="$1"
machine="$2"
llvm=/usr/lib/llvm-14/bin
problems=0
problem() {
  echo "$library: $*" >&2
  problems=1
}

declare -A machines=([i386]=IMAGE_FILE_MACHINE_I386 [x86-64]=IMAGE_FILE_MACHINE_AMD64 [arm64]=IMAGE_FILE_MACHINE_ARM64)
expected_machine="${machines[$machine]:?unknown machine $machine}"
headers=$("$llvm/llvm-readobj" --file-headers --coff-exports --coff-imports "$library" 2>&1) ||
  { problem "not a PE file: $headers"; exit 1; }
found_machine=$(sed -n 's/^ *Machine: \([A-Z0-9_]*\).*/\1/p' <<<"$headers" | head -n 1)
[ "$found_machine" = "$expected_machine" ] || problem "machine is '$found_machine', not $expected_machine ($machine)"
grep -q 'IMAGE_FILE_DLL ' <<<"$headers" || problem "not a DLL"

exports=$(awk '/^Export \{/ { listing = 1 } listing && /^ *Name:/ { print $2 } /^\}/ { listing = 0 }' <<<"$headers" |
  sort -u)
[ "$exports" = "REALPluginMain" ] || problem "exports '$(tr '\n' ' ' <<<"$exports")' instead of REALPluginMain alone"

while read -r imported; do
  case "${imported,,}" in
    kernel32.dll | msvcrt.dll | ucrtbase.dll | api-ms-win-crt-*.dll) ;;
    *) problem "imports from $imported" ;;
  esac
done < <(awk '/^Import \{/ { listing = 1 } listing && /^ *Name:/ { print $2 } /^\}/ { listing = 0 }' <<<"$headers")

if [ "$machine" = arm64 ]; then
  reads=$("$llvm/llvm-objdump" -d --no-show-raw-insn "$library" | grep -cE '[[:space:],[]([xw]18)([],]|$)' || true)
  [ "$reads" -le 1 ] || problem "names x18 in $reads instructions, where only the C runtime's start-up may read it"
fi
exit "$problems"

#!/usr/bin/env bash
# The Mac counterpart of scripts/check-library.sh: whether a built PixTurn.dylib
# can go into a Xojo application's plug-ins as it is. For each of MACHINES (the
# slices it must hold, exactly: x86_64, arm64, or both for a universal file):
# a dylib for that processor that exports _REALPluginMain alone, loads nothing
# but libSystem, CoreFoundation and CoreServices, asks for macOS 11.0 or later,
# is linked with the classic fix-up tables (which macOS 11 reads, as does the
# simulated host's loader) and, on arm64, carries a signature, without which
# Apple silicon runs none of its code. LLVM's tools read Mach-O; GNU's do not.
# Usage: scripts/check-macho.sh LIBRARY "MACHINES"; prints what is wrong, exits
# 1 if anything is.
set -euo pipefail
library="$1"
read -ra machines <<<"$2"
llvm=/usr/lib/llvm-14/bin
problems=0
problem() {
  echo "$library: $*" >&2
  problems=1
}

archs=$("$llvm/llvm-lipo" -archs "$library" 2>&1) || { problem "not a Mach-O file: $archs"; exit 1; }
if [ "$(tr ' ' '\n' <<<"$archs" | sed '/^$/d' | sort)" != "$(printf '%s\n' "${machines[@]}" | sort)" ]; then
  problem "holds the slices '${archs% }', not '${machines[*]}'"
  exit 1
fi

for machine in "${machines[@]}"; do
  slice() { "$llvm/llvm-objdump" --macho --arch="$machine" "$@" "$library"; }
  in_slice() { problem "$machine slice: $*"; }
  slice --private-header | grep -qE "^MH_MAGIC_64 +[A-Z0-9_]+ .* DYLIB " || in_slice "not a 64-bit dylib"
  exports=$(slice --exports-trie | awk '/^0x/ { print $2 }')
  [ "$exports" = "_REALPluginMain" ] || in_slice "exports '$(tr '\n' ' ' <<<"$exports")' instead of _REALPluginMain alone"
  while read -r loaded; do
    case "$loaded" in
      /usr/lib/libSystem.B.dylib | \
        /System/Library/Frameworks/CoreFoundation.framework/Versions/A/CoreFoundation | \
        /System/Library/Frameworks/CoreServices.framework/Versions/A/CoreServices) ;;
      *) in_slice "loads $loaded" ;;
    esac
  done < <(slice --dylibs-used | awk 'NR > 1 && !/@rpath\/PixTurn.dylib/ { print $1 }')
  commands=$(slice --private-headers)
  grep -qE '^ +minos 11\.0$' <<<"$commands" || in_slice "its lowest macOS is not 11.0"
  grep -qE '^ +cmd LC_DYLD_INFO_ONLY$' <<<"$commands" || in_slice "no classic fix-up tables (LC_DYLD_INFO_ONLY)"
  if [ "$machine" = arm64 ]; then
    grep -qE '^ +cmd LC_CODE_SIGNATURE$' <<<"$commands" || in_slice "not signed"
  fi
done
exit "$problems"

#!/usr/bin/env bash
# The Mac counterpart of scripts/check-library.sh: whether a built PixTurn.dylib
# can go into a Xojo application's plug-ins as it is. For each of MACHINES (the
# slices it must hold, exactly: x86_64, arm64, or both for a universal file):
# a dylib for that processor that exports _REALPluginMain alone, loads nothing
# but libSystem, CoreFoundation and CoreServices, asks for macOS 11.0 or later,
# is linked with the classic fix-up tables (which macOS 11 reads, as does the
# simulated host's loader) and, on arm64, carries a signature whose page hashes
# match the file, without which Apple silicon runs none of its code. LLVM's
# tools read Mach-O; GNU's do not.
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
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A 32-bit word of FILE at byte OFFSET, big- or little-endian.
word() { od -An -tu4 -j "$3" -N4 --endian="$1" "$2" | tr -d ' '; }
byte() { od -An -tu1 -j "$2" -N1 "$1" | tr -d ' '; }

# Whether the ad hoc signature of the single-processor Mach-O FILE holds: every
# page up to the code limit hashes (SHA-256) to its slot in the code directory.
signature_holds() {
  local file=$1 at=32 commands signature="" index count offset directory
  commands=$(word little "$file" 16)
  for ((index = 0; index < commands; index++)); do
    [ "$(word little "$file" "$at")" = 29 ] && signature=$(word little "$file" $((at + 8)))
    at=$((at + $(word little "$file" $((at + 4)))))
  done
  [ -n "$signature" ] || return 1
  count=$(word big "$file" $((signature + 8)))
  for ((index = 0; index < count; index++)); do
    offset=$(word big "$file" $((signature + 16 + 8 * index)))
    [ "$(word big "$file" $((signature + offset)))" = $((0xfade0c02)) ] && directory=$((signature + offset))
  done
  [ -n "${directory:-}" ] && [ "$(byte "$file" $((directory + 37)))" = 2 ] || return 1
  local hashes slots limit size page expected actual
  hashes=$((directory + $(word big "$file" $((directory + 16)))))
  slots=$(word big "$file" $((directory + 28)))
  limit=$(word big "$file" $((directory + 32)))
  size=$(byte "$file" $((directory + 36)))
  page=$((1 << $(byte "$file" $((directory + 39)))))
  for ((index = 0; index < slots; index++)); do
    expected=$(od -An -tx1 -v -j $((hashes + index * size)) -N "$size" "$file" | tr -d ' \n')
    actual=$(tail -c +$((index * page + 1)) "$file" | head -c $((limit - index * page < page ? limit - index * page : page)) |
      openssl dgst -sha256 -binary | head -c "$size" | od -An -tx1 -v | tr -d ' \n')
    [ "$expected" = "$actual" ] || return 1
  done
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
    "$llvm/llvm-lipo" -thin arm64 -output "$work/arm64" "$library" 2>/dev/null || cp "$library" "$work/arm64"
    signature_holds "$work/arm64" || in_slice "not signed, or its signature does not match its pages"
  fi
done
exit "$problems"

#!/usr/bin/env bash
# The check of the Xojo plug-in file that make test ends with: unpacks it and
# checks its tree (exactly the README table's targets, one library each, a help
# folder without sub-folders), each library for its target's machine with
# scripts/check-library.sh (scripts/check-dll.sh for a DLL, scripts/check-macho.sh
# for a Mac library), and the help in
# headless Chromium (every picture loads, every link resolves). Ends with one
# line, "package check: PASS ..." or "package check: FAIL ...", and exits 0 or
# 1 with it.
# Usage: scripts/check-package.sh [FILE]   (build/package/PixTurn.xojo_plugin)
set -euo pipefail
cd "$(dirname "$0")/.."
archive=$(realpath "${1:-build/package/PixTurn.xojo_plugin}")
unpacked=$(mktemp -d)
trap 'rm -rf "$unpacked"' EXIT
(cd "$unpacked" && cmake -E tar xf "$archive")
failures=()
fail() { failures+=("$1"); echo "package check: $1" >&2; }
listing() { (cd "$1" && find . -mindepth 1 -maxdepth 1 -printf '%y %f\n' | sort); }

[ "$(listing "$unpacked")" = "d PixTurn" ] || fail "the archive holds more than the folder PixTurn"
[ "$(listing "$unpacked/PixTurn")" = $'d Build Resources\nd IDE Resources' ] ||
  fail "PixTurn/ holds more or less than Build Resources/ and IDE Resources/"

resources="$unpacked/PixTurn/Build Resources"
expected=""
targets=0
while IFS=$'\t' read -r target preset library machine; do
  expected+="d $target"$'\n'
  targets=$((targets + 1))
  [ "$(listing "$resources/$target")" = "f $library" ] || fail "$target: not exactly $library"
  case "$library" in
    *.dll) check=scripts/check-dll.sh ;;
    *.dylib) check=scripts/check-macho.sh ;;
    *) check=scripts/check-library.sh ;;
  esac
  bash "$check" "$resources/$target/$library" "$machine" || fail "$target: $check $machine"
done < <(bash scripts/package-targets.sh)
[ "$(listing "$resources")" = "$(printf '%s' "$expected" | sort)" ] || fail "Build Resources/ is not the README's targets"

help="$unpacked/PixTurn/IDE Resources/Help"
[ "$(listing "$unpacked/PixTurn/IDE Resources")" = "d Help" ] || fail "IDE Resources/ holds more than Help/"
[ -z "$(find "$help" -mindepth 1 -not -type f)" ] || fail "Help/ has sub-folders"
read -r _ images _ broken _ links _ unresolved _ < <(bash scripts/open-page.sh "$help/index.html" || echo)
sections=$(grep -c '^<section id=' "$help/index.html" || true)
[ "$sections" = 15 ] || fail "the help describes $sections methods, not 15"
[ "${broken:-x}" = 0 ] && [ "${unresolved:-x}" = 0 ] && [ "${links:-0}" -ge 15 ] && [ "${images:-0}" -ge 16 ] ||
  fail "the help in Chromium: images ${images:-?} broken ${broken:-?} links ${links:-?} unresolved ${unresolved:-?}"

if [ ${#failures[@]} -eq 0 ]; then
  echo "package check: PASS: $targets targets, help with $images pictures and $links links ($archive)"
else
  echo "package check: FAIL: ${#failures[@]} problems ($archive)"
  exit 1
fi

#!/usr/bin/env bash
# The mutation check: do the tests catch a broken plug-in, command or simulated
# host? Each deliberate fault listed in scripts/mutants/*.txt is put, one at a
# time, into a copy of this tree (build/mutants/src), which is rebuilt and
# tested: first the default build's tests, then, for a fault they miss, the fuzz
# target on the committed corpus. A fault nothing catches is a gap in the tests,
# or a change that changes nothing and should leave the list. Any such fault
# fails the run.
#
# A list holds blocks like this one (the "-" text must occur exactly once in
# the file; several "-"/"+" pairs make one fault):
#   == the row shear leaves the last pixel of each row unwritten
#   file: transforms/skew_loops.h
#   - for (int32_t d = 1; d < length; ++d)
#   + for (int32_t d = 1; d < length - 1; ++d)
#
# build/mutants/report.txt lists, for every fault, the tests that caught it:
# a test that alone catches some fault is one to keep.
# Usage: scripts/mutants.sh [--check] [LIST...]; --check only checks that every
# fault applies; MUTANTS_MATCH=REGEX takes only the faults whose title matches;
# MUTANTS_DIR puts the copy elsewhere than build/mutants.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs="${JOBS:-$(nproc)}"
check_only=0
if [ "${1:-}" = "--check" ]; then check_only=1; shift; fi
if [ $# -eq 0 ]; then set -- scripts/mutants/*.txt; fi
work="$(realpath -m "${MUTANTS_DIR:-build/mutants}")"
src="$work/src"
report="$work/report.txt"

# Replaces the one occurrence of FROM in FILE by TO; exits 3 unless there is exactly one.
replace_once() {
  perl -e '
    my ($file, $from, $to) = @ARGV;
    local $/;
    open(my $in, "<", $file) or die "$file: $!\n";
    my $text = <$in>;
    my $count = () = $text =~ /\Q$from\E/g;
    exit 3 if $count != 1;
    $text =~ s/\Q$from\E/$to/;
    open(my $out, ">", $file) or die "$file: $!\n";
    print $out $text;' "$@"
}

titles=() files=() edits=()
parse() {
  local list="$1" line title="" file="" edit="" from=""
  flush() {
    if [ -n "$title" ]; then titles+=("$title"); files+=("$file"); edits+=("$edit"); fi
    title="" file="" edit=""
  }
  while IFS= read -r line || [ -n "$line" ]; do
    case "$line" in
      "== "*) flush; title="${line#== }" ;;
      "file: "*) file="${line#file: }" ;;
      "- "*) from="${line#- }" ;;
      "+ "*) edit+="${from}"$'\x1f'"${line#+ }"$'\x1e' ;;
      "+") edit+="${from}"$'\x1f'$'\x1e' ;;
    esac
  done <"$list"
  flush
}
for list in "$@"; do parse "$list"; done

# Puts fault I into the copy; restores the file when any edit fails to apply.
apply() {
  local i="$1" target="$src/${files[$1]}" pair from to
  cp "$target" "$work/original"
  local IFS=$'\x1e'
  for pair in ${edits[$i]}; do
    from="${pair%%$'\x1f'*}" to="${pair#*$'\x1f'}"
    if ! replace_once "$target" "$from" "$to"; then
      cp "$work/original" "$target"
      return 1
    fi
  done
}
restore() { cp "$work/original" "$src/${files[$1]}"; }

# The copy keeps its builds from run to run; its sources are replaced, with
# their times, so that only what changed is rebuilt.
mkdir -p "$src"
find "$src" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
tar --exclude=./build --exclude=./.git -cf - . | tar -xf - -C "$src"

unappliable=0
for i in "${!titles[@]}"; do
  if [ -z "${edits[$i]}" ] || ! apply "$i"; then
    echo "mutants: does not apply: ${titles[$i]} (${files[$i]})" >&2
    unappliable=1
  else
    restore "$i"
  fi
done
[ "$unappliable" = 0 ] || exit 2
if [ "$check_only" = 1 ]; then
  echo "mutants: all ${#titles[@]} faults apply"
  exit 0
fi

build() { (cd "$src" && cmake --build --preset "$1" -j "$jobs" >"$work/build-$1.log" 2>&1); }
(cd "$src" && cmake --preset default >/dev/null && cmake --preset fuzz >/dev/null)
build default && build fuzz || { echo "mutants: the unmutated tree does not build" >&2; exit 2; }
(cd "$src" && ctest --preset default -j "$jobs" >/dev/null) || { echo "mutants: tests fail before any fault" >&2; exit 2; }

: >"$report"
survivors=0
for i in "${!titles[@]}"; do
  [[ "${titles[$i]}" =~ ${MUTANTS_MATCH:-.} ]] || continue
  apply "$i"
  if ! build default; then
    restore "$i"
    echo "mutants: does not build: ${titles[$i]} (see $work/build-default.log)" >&2
    exit 2
  fi
  caught=$(cd "$src" && ctest --preset default -j "$jobs" --timeout 120 2>&1 |
           sed -En 's/^[[:space:]]*[0-9]+ - (.*) \(.*\)$/\1/p' | tr '\n' ' ' || true)
  if [ -z "$caught" ] && build fuzz &&
     ! "$src/build/fuzz/fuzz/pixturn_fuzz" -runs=0 "$src/fuzz/corpus" >"$work/fuzz.log" 2>&1; then
    caught="fuzz-corpus"
  fi
  restore "$i"
  printf '%s\n  %s\n' "${titles[$i]}" "${caught:-SURVIVED}" >>"$report"
  if [ -z "$caught" ]; then
    survivors=$((survivors + 1))
    echo "SURVIVED  ${titles[$i]}"
  else
    echo "caught    ${titles[$i]}: $(wc -w <<<"$caught") test(s)"
  fi
done
# Leave the copy's builds as the unmutated tree built them.
build default || true
echo "mutants: $survivors survived; $report lists what caught each"
[ "$survivors" = 0 ]

#!/usr/bin/env bash
# The lines of plugin/, picture/ and transforms/ that the committed fuzz corpus
# reaches: builds the fuzz target with source coverage (coverage preset), runs
# every input of fuzz/corpus once, and prints llvm-cov's report per file. The
# lines never reached go to build/coverage/unreached.txt (file:line and the
# code), and an HTML view of all of it to build/coverage/html/.
# Usage: scripts/coverage.sh
set -euo pipefail
cd "$(dirname "$0")/.."
jobs="${JOBS:-2}"

cmake --preset coverage
cmake --build --preset coverage -j "$jobs"

out=build/coverage
rm -f "$out"/corpus-*.profraw
LLVM_PROFILE_FILE="$out/corpus-%p.profraw" "$out/fuzz/pixturn_fuzz" -runs=0 fuzz/corpus 2>/dev/null
llvm-profdata-14 merge -sparse "$out"/corpus-*.profraw -o "$out/corpus.profdata"

# The reset is left out: the shipped library has none.
sources=(-ignore-filename-regex='plugin/reset/' plugin picture transforms)
llvm-cov-14 report "$out/fuzz/pixturn_fuzz" -instr-profile="$out/corpus.profdata" "${sources[@]}"
llvm-cov-14 show "$out/fuzz/pixturn_fuzz" -instr-profile="$out/corpus.profdata" -format=html \
  -output-dir="$out/html" "${sources[@]}"
# In llvm-cov's text view a line reads "  number|  count|code"; a count of 0 is a
# line with code that never ran.
llvm-cov-14 show "$out/fuzz/pixturn_fuzz" -instr-profile="$out/corpus.profdata" "${sources[@]}" |
  awk -F'|' '/^\/.*:$/ { file = substr($0, 1, length($0) - 1); sub(".*/(plugin|picture|transforms)/", "&", file) }
             $2 ~ /^ *0$/ { gsub(/^ +/, "", $1); print file ":" $1 ":" $3 }' |
  sed "s|^$PWD/||" > "$out/unreached.txt"
echo "coverage: $(wc -l < "$out/unreached.txt") lines not reached, listed in $out/unreached.txt"

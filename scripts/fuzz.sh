#!/usr/bin/env bash
# Builds the libFuzzer target (fuzz preset) and fuzzes for the given number of
# seconds, 60 by default, starting from the committed seeds. New inputs go to a
# scratch corpus under build/fuzz; any finding (crash, sanitizer report, hang,
# unbalanced ledger, result off the slow models) is written to
# build/fuzz/findings/ and fails the run.
# Usage: scripts/fuzz.sh [seconds]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"

cmake --preset fuzz
cmake --build --preset fuzz -j "${JOBS:-2}"

corpus=build/fuzz/corpus
findings=build/fuzz/findings/
mkdir -p "$corpus" "$findings"
build/fuzz/fuzz/pixturn_fuzz -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 \
  -artifact_prefix="$findings" -print_final_stats=1 "$corpus" fuzz/corpus

#!/usr/bin/env bash
# Builds the libFuzzer target (fuzz preset) and fuzzes, starting from the
# committed corpus, until SECONDS have passed (60 by default; 0: no limit) or
# RUNS inputs have been run (no limit by default), whichever comes first. New
# inputs go to a scratch corpus under build/fuzz; any finding (crash, sanitizer
# report, hang, unbalanced ledger, result off the slow models) is written to
# build/fuzz/findings/ and fails the run.
#
# The fuzzing runs in child processes (-fork), as many at once as JOBS; the
# parent merges what they find and counts their inputs.
# Usage: scripts/fuzz.sh [SECONDS [RUNS]]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
runs="${2:--1}"
jobs="${JOBS:-2}"

cmake --preset fuzz
cmake --build --preset fuzz -j "$jobs"

corpus=build/fuzz/corpus
findings=build/fuzz/findings/
mkdir -p "$corpus" "$findings"
started=build/fuzz/run-started
touch "$started"
# A small quarantine keeps each child's memory flat (an input's own
# use-after-free is still caught) and shorter allocation stacks make the
# simulated host's many small allocations cheaper; both only speed the search.
export ASAN_OPTIONS="${ASAN_OPTIONS:-quarantine_size_mb=16:malloc_context_size=8}"
# Forked fuzzing would go on past timeouts and memory exhaustion: both are findings.
build/fuzz/fuzz/pixturn_fuzz -fork="$jobs" -ignore_crashes=0 -ignore_timeouts=0 -ignore_ooms=0 \
  -max_total_time="$seconds" -runs="$runs" -timeout=20 -rss_limit_mb=4096 \
  -artifact_prefix="$findings" -print_final_stats=1 "$corpus" fuzz/corpus
# An input that fails only when the parent merges a child's corpus leaves its
# artifact without failing the run.
new_findings=$(find "$findings" -type f -newer "$started")
if [ -n "$new_findings" ]; then
  echo "fuzz: findings (run one with build/fuzz/fuzz/pixturn_fuzz FILE):" >&2
  echo "$new_findings" >&2
  exit 1
fi

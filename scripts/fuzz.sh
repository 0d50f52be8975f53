#!/usr/bin/env bash
# Builds the libFuzzer target (fuzz preset) and fuzzes for the given number of
# seconds, 60 by default, starting from the committed seeds. New inputs go to a
# scratch corpus under build/fuzz; any finding (crash, sanitizer report, hang,
# unbalanced ledger, result off the slow models) is written to
# build/fuzz/findings/ and fails the run.
#
# Every input loads a fresh copy of the plug-in library, which a host never
# unloads, so one process can't run inputs for long: the fuzzing runs in child
# processes (-fork), as many at once as JOBS, each replaced after a while.
# Usage: scripts/fuzz.sh [seconds]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
jobs="${JOBS:-2}"

cmake --preset fuzz
cmake --build --preset fuzz -j "$jobs"

corpus=build/fuzz/corpus
findings=build/fuzz/findings/
mkdir -p "$corpus" "$findings"
started=build/fuzz/run-started
touch "$started"
# Forked fuzzing would go on past timeouts and memory exhaustion: both are findings.
build/fuzz/fuzz/pixturn_fuzz -fork="$jobs" -ignore_crashes=0 -ignore_timeouts=0 -ignore_ooms=0 \
  -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 \
  -artifact_prefix="$findings" -print_final_stats=1 "$corpus" fuzz/corpus
# An input that fails only when the parent merges a child's corpus leaves its
# artifact without failing the run.
new_findings=$(find "$findings" -type f -newer "$started")
if [ -n "$new_findings" ]; then
  echo "fuzz: findings (run one with build/fuzz/fuzz/pixturn_fuzz FILE):" >&2
  echo "$new_findings" >&2
  exit 1
fi

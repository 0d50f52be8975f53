#!/usr/bin/env bash
# The targets of the Xojo plug-in file, from the README's table of them (its one
# home): one line per row that names a preset, "folder<TAB>preset<TAB>ELF machine".
# Usage: scripts/package-targets.sh
set -euo pipefail
awk -F'|' '
  /^\| Xojo target \(folder\) \|/ { table = 1; next }
  table && !/^\|/ { exit }
  table {
    for (i = 2; i <= 5; i++) gsub(/^ +| +$/, "", $i)
    if ($4 !~ /^`[^`]+`$/) next
    gsub(/`/, "", $2); gsub(/`/, "", $4); gsub(/`/, "", $5)
    print $2 "\t" $4 "\t" $5
  }
' "$(dirname "$0")/../README.md"

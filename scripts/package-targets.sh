#!/usr/bin/env bash
# The targets of the Xojo plug-in file, from the README's table of them (its one
# home): one line per row that names a preset,
#   folder<TAB>preset<TAB>library<TAB>machine
# A universal library's row names its slices' presets joined by " + ", and its
# machines separated by spaces.
# Usage: scripts/package-targets.sh
set -euo pipefail
awk -F'|' '
  /^\| Xojo target \(folder\) \|/ { table = 1; next }
  table && !/^\|/ { exit }
  table {
    if ($4 !~ /^ *`[^`]+`( *\+ *`[^`]+`)* *$/) next
    for (i = 2; i <= 6; i++) gsub(/^ +| +$|`/, "", $i)
    print $2 "\t" $4 "\t" $5 "\t" $6
  }
' "$(dirname "$0")/../README.md"

#!/usr/bin/env bash
# Installs those of the given Debian packages that are not installed yet, asking
# apt nothing when all are there. Arguments starting with "-" are options for
# apt-get install.
# Usage: scripts/install-missing.sh [apt-get option...] package...
set -euo pipefail
options=()
missing=()
for arg in "$@"; do
  case "$arg" in
    -*) options+=("$arg") ;;
    *) dpkg-query -W -f='${Status}' "$arg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$arg") ;;
  esac
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${options[@]}" "${missing[@]}"
fi

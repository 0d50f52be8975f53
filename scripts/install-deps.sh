#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those missing.
# Usage: scripts/install-deps.sh [extra package...]
set -euo pipefail
# libpng and libjpeg-turbo (whose RGBA pixel layouts it uses) for the pixturn
# command, g++-multilib and googletest (sources) for the 32-bit build, clang and
# its runtime libraries for the libFuzzer target.
packages=(cmake g++ make pkg-config libgtest-dev libpng-dev libjpeg62-turbo-dev
          g++-multilib googletest qemu-user clang libclang-rt-14-dev "$@")
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}"
fi

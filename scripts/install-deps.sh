#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those missing.
# Usage: scripts/install-deps.sh [extra package...]
set -euo pipefail
# libpng and libjpeg-turbo (whose RGBA pixel layouts it uses) for the pixturn
# command, g++-multilib and googletest (sources) for the 32-bit build, clang and
# its runtime libraries for the libFuzzer target.
exec bash "$(dirname "$0")/install-missing.sh" \
  cmake g++ make pkg-config libgtest-dev libpng-dev libjpeg62-turbo-dev \
  g++-multilib googletest qemu-user clang libclang-rt-14-dev "$@"

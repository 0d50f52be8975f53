#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those missing;
# with --demo only what `make demo` needs (the compiler, CMake, libpng, libjpeg).
# Usage: scripts/install-deps.sh [--demo] [extra package...]
set -euo pipefail
# libpng and libjpeg-turbo (whose RGBA pixel layouts it uses) for the pixturn
# command.
demo=(cmake g++ make pkg-config libpng-dev libjpeg62-turbo-dev)
if [ "${1:-}" = --demo ]; then
  shift
  exec bash "$(dirname "$0")/install-missing.sh" "${demo[@]}" "$@"
fi
# libgtest-dev for the tests; Debian's cross compilers for 32-bit x86, ARM and
# arm64, QEMU's user-mode emulators and googletest (sources) for those builds;
# clang and its runtime libraries for the libFuzzer target,
# llvm-14's llvm-cov and llvm-profdata for the coverage report and its llvm-objdump,
# llvm-lipo and llvm-strip for the Mac libraries, chromium for the
# tests that open the demo's gallery and the plug-in file's help, the mingw-w64
# compilers (POSIX threads) for the two Windows DLLs, wine64 for the 64-bit
# Windows tests, mawk for the help's generator (a required package, named so
# that it is never assumed), lld-14's ld64.lld, which links the Mac libraries,
# and openssl, which checks Zig's download (scripts/install-zig.sh, the Mac
# libraries' compiler).
bash "$(dirname "$0")/install-missing.sh" "${demo[@]}" libgtest-dev \
  g++-i686-linux-gnu g++-arm-linux-gnueabihf g++-aarch64-linux-gnu googletest qemu-user \
  clang libclang-rt-14-dev llvm-14 chromium \
  g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix wine64 mawk lld-14 openssl "$@"
exec bash "$(dirname "$0")/install-zig.sh"

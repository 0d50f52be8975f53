#!/usr/bin/env bash
# Installs the Debian packages the benchmarks need, only those missing: Google
# Benchmark and the peer libraries the plug-in is timed against (ImageMagick's
# MagickCore, Leptonica, OpenCV's core and imgproc modules). The tests never need
# them. Recommends are left out: OpenCV's and ImageMagick's pull in hundreds of
# packages that the benchmarks do not use.
set -euo pipefail
exec bash "$(dirname "$0")/install-missing.sh" --no-install-recommends \
  cmake g++ make pkg-config libbenchmark-dev \
  libmagickcore-6.q16-dev libleptonica-dev \
  libopencv-core-dev libopencv-imgproc-dev

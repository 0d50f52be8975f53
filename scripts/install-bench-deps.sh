#!/usr/bin/env bash
# Installs the Debian packages the benchmarks need, only those missing: Google
# Benchmark and the peer libraries the plug-in is timed against (ImageMagick's
# MagickCore, Leptonica, OpenCV's core and imgproc modules). The tests never need
# them. Recommends are left out: OpenCV's and ImageMagick's pull in hundreds of
# packages that the benchmarks do not use.
set -euo pipefail
packages=(cmake g++ make pkg-config libbenchmark-dev
          libmagickcore-6.q16-dev libleptonica-dev
          libopencv-core-dev libopencv-imgproc-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

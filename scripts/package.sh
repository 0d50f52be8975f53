#!/usr/bin/env bash
# make package: the Xojo plug-in file build/package/PixTurn.xojo_plugin, a zip
# archive of
#   PixTurn/Build Resources/<target>/<library>       one per target of the README's table
#   PixTurn/IDE Resources/Help/index.html            the method reference, with its pictures beside it
# Each target's library is built with its preset (only the PixTurn target, in the
# build folder make test uses) and stripped with that toolchain's strip; a
# library Zig builds (a Mac one, Windows arm64) with llvm-strip, which reads
# Mach-O and arm64 PE files and signs an arm64 Mac library anew (GNU strip reads
# neither), and a universal one is its slices, stripped, joined by llvm-lipo. The help
# takes its text from the README and its pictures from `pixturn demo` on the
# test card, run by the default build's pixturn.
# Usage: JOBS=N scripts/package.sh
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=${JOBS:-2}
out=build/package
tree=$out/tree
rm -rf "$tree" "$out/gallery"
mkdir -p "$tree/PixTurn/IDE Resources/Help"

build() {
  cmake --preset "$1" > "$out/configure-$1.log"
  cmake --build --preset "$1" --target "${@:2}" -j "$jobs" > "$out/build-$1.log"
}

while IFS=$'\t' read -r target preset library machine; do
  echo "package: $target ($machine) from build/$preset"
  read -ra presets <<<"${preset//+/ }"
  destination="$tree/PixTurn/Build Resources/$target/$library"
  mkdir -p "$(dirname "$destination")"
  slices=()
  for each in "${presets[@]}"; do
    build "$each" PixTurn
    slices+=("$out/$each-$library")
    if grep -q '^PIXTURN_LIBRARY_TOOLCHAIN:STRING=.' "build/$each/CMakeCache.txt"; then
      /usr/lib/llvm-14/bin/llvm-strip -x -S -o "${slices[-1]}" "build/$each/$library"
    else
      strip=$(sed -n 's/^CMAKE_STRIP:FILEPATH=//p' "build/$each/CMakeCache.txt")
      "$strip" --strip-unneeded -o "${slices[-1]}" "build/$each/$library"
    fi
  done
  if [ ${#slices[@]} -gt 1 ]; then
    /usr/lib/llvm-14/bin/llvm-lipo -create -output "$destination" "${slices[@]}"
    rm "${slices[@]}"
  else
    mv "${slices[0]}" "$destination"
  fi
done < <(bash scripts/package-targets.sh)

echo "package: the help, with pixturn demo's pictures"
build default pixturn PixTurn
build/default/tools/pixturn demo "$out/gallery" --png-level 9 > "$out/demo.log"
help="$tree/PixTurn/IDE Resources/Help"
version=$(sed -n 's/^project(PixTurn VERSION \([^ ]*\) .*/\1/p' CMakeLists.txt)
awk -v version="$version" -f scripts/help-page.awk README.md "$out/gallery/index.html" > "$help/index.html"
grep -o 'src="[^"]*"' "$help/index.html" | sed 's/^src="//; s/"$//' | sort -u |
  while read -r picture; do cp "$out/gallery/$picture" "$help/"; done

(cd "$tree" && cmake -E tar cf ../PixTurn.xojo_plugin.tmp --format=zip PixTurn)
mv "$out/PixTurn.xojo_plugin.tmp" "$out/PixTurn.xojo_plugin"
echo "package: $out/PixTurn.xojo_plugin"

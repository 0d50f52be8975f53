#!/usr/bin/env bash
# Every pixturn command against ImageMagick's convert doing the same transform,
# file to file, on a 4000 x 3000 photo-like picture as PNG and as JPEG. Each
# figure is the median wall time of RUNS runs (3 unless told), both programs run
# in turn in this one session; the table is Markdown, for docs/benchmarks.md.
# ONLY=REGEX keeps the commands that match it ("ONLY=memory").
# Usage: bench/cli.sh PIXTURN [WORK_DIR]
set -euo pipefail
pixturn=$(realpath "$1")
work=${2:-build/bench-cli}
runs=${RUNS:-3}
only=${ONLY:-.}
# Debian's ImageMagick 6; /usr/local may hold other programs of that name.
magick=$(command -v /usr/bin/convert || command -v convert)
mkdir -p "$work"
cd "$work"

# A picture with a photo's texture (plasma, softened), made once.
if [ ! -f photo.png ]; then
  "$magick" -size 4000x3000 -seed 7 plasma:fractal -blur 0x2 -depth 8 photo.png
  "$magick" photo.png -quality 92 photo.jpg
fi

seconds() {  # the median wall time of "$@" over $runs runs
  local times=()
  for _ in $(seq "$runs"); do
    local start end
    start=$(date +%s%N)
    "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; exit 1; }
    end=$(date +%s%N)
    times+=("$(( (end - start) / 1000000 ))")
  done
  printf '%s\n' "${times[@]}" | sort -n | sed -n "$(( (runs + 1) / 2 ))p" | awk '{printf "%.2f", $1 / 1000}'
}

# pixturn's command | its options | convert's options for the same pixels.
# convert turns clockwise for positive angles, pixturn anticlockwise.
jobs=(
  "rotate|--angle 30|-background white -rotate -30"
  "rotate-mask|--angle 30 --cut|-background white -rotate -30 -gravity center -extent 4000x3000"
  "rotate90||-rotate -90"
  "rotate180||-rotate 180"
  "rotate270||-rotate 90"
  "mirror||-flip -flop"
  "hmirror||-flop"
  "vmirror||-flip"
  "mirror-in-place||-flip -flop"
  "hmirror-in-place||-flop"
  "vmirror-in-place||-flip"
  "clone||"
  "clone|--size 5000x3750|-background white -extent 5000x3750"
  "bitmap||"
)

echo "| Command | File | pixturn (s) | convert (s) | pixturn / convert |"
echo "|---|---|---:|---:|---:|"
for format in png jpg; do
  for job in "${jobs[@]}"; do
    IFS='|' read -r command options theirs <<<"$job"
    [[ "$command $options" =~ $only ]] || continue
    # shellcheck disable=SC2086
    ours=$(seconds "$pixturn" "$command" "photo.$format" $options -o "out.$format")
    # shellcheck disable=SC2086
    imagemagick=$(seconds "$magick" "photo.$format" $theirs "out-magick.$format")
    ratio=$(awk -v a="$ours" -v b="$imagemagick" 'BEGIN { printf "%.2f", a / b }')
    echo "| \`$command${options:+ $options}\` | $format | $ours | $imagemagick | $ratio |"
  done
  # The estimate reads only the size: against ImageMagick reading the size.
  [[ memory =~ $only ]] || continue
  ours=$(seconds "$pixturn" memory "photo.$format" --angle 30)
  imagemagick=$(seconds identify -ping -format '%w %h' "photo.$format")
  ratio=$(awk -v a="$ours" -v b="$imagemagick" 'BEGIN { printf "%.2f", a / b }')
  echo "| \`memory --angle 30\` (convert: \`identify -ping\`) | $format | $ours | $imagemagick | $ratio |"
done

#!/usr/bin/env bash
# Makes the demo service's playable clips: two short videos with sound, each
# at 360p, 480p and 720p, H.264 + AAC in MP4 with the index at the front so
# that playback can start (and seek with Range requests) before the whole
# file has arrived. Files that already exist are kept, so a second run is
# instant. Usage: demo/make-media.sh OUT_DIR
set -euo pipefail

out=${1:?usage: make-media.sh OUT_DIR}
mkdir -p "$out"

if ! command -v ffmpeg >/dev/null 2>&1; then
  echo "make-media: ffmpeg is missing; install it with ./run deps" >&2
  exit 1
fi

# name, seconds, video source, tone frequency. The lengths must match the
# clip table of the service's content generator (ZuviDemoContent::clips()).
clips=(
  "demo-a 30 testsrc2 440"
  "demo-b 12 smptehdbars 660"
)
heights=(360 480 720)

make_clip() {
  local name=$1 seconds=$2 source=$3 tone=$4 height=$5
  local width=$(( (height * 16 / 9 + 1) / 2 * 2 ))
  local target="$out/$name-$height.mp4"
  [ -s "$target" ] && return 0
  local partial="$target.part.mp4"
  ffmpeg -hide_banner -loglevel error -y \
    -f lavfi -i "$source=size=${width}x${height}:rate=25:duration=$seconds" \
    -f lavfi -i "sine=frequency=$tone:sample_rate=44100:duration=$seconds" \
    -vf "drawbox=x=0:y=ih-ih/12:w=iw*t/$seconds:h=ih/12:color=0xEE7099@0.9:t=fill" \
    -c:v libx264 -preset veryfast -crf 30 -pix_fmt yuv420p -g 50 \
    -c:a aac -b:a 64k -ac 2 \
    -movflags +faststart -shortest "$partial"
  mv "$partial" "$target"
  echo "make-media: $target"
}

for clip in "${clips[@]}"; do
  # shellcheck disable=SC2086
  set -- $clip
  for height in "${heights[@]}"; do
    make_clip "$1" "$2" "$3" "$4" "$height"
  done
done

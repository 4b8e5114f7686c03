#!/usr/bin/env bash
# End-to-end run of the app under Xvfb against the demo service: the first
# video of the recommended grid is opened, then
# screenshots of playing, after a seek, fullscreen, back inline, and faster in
# 480P from the player's menu (with the time the new quality took), then
# (with --measure) whole-process CPU and peak memory of the app playing the
# 720p clip with its danmaku for 60 s beside a bare Qt player of the same file
# (as Qt plays it, and with its pipeline bounded as the app's is), and with
# the player's controls kept up instead of hidden.
# Usage: tests/e2e/player-e2e.sh BUILD_DIR OUT_DIR [--measure]
set -euo pipefail

build=$(cd "${1:?usage: player-e2e.sh BUILD_DIR OUT_DIR [--measure]}" && pwd)
out=${2:?usage: player-e2e.sh BUILD_DIR OUT_DIR [--measure]}
measure=${3:-}
mkdir -p "$out"
out=$(cd "$out" && pwd)
. "$(dirname "$0")/demo-service.sh"
start_demo_service "$build" "$out"

driver="$build/bin/zuvi-player-e2e"

xvfb "$driver" --endpoints "$endpoints" --out "$out" | tee "$out/steps.txt"

[ "$measure" = "--measure" ] || exit 0

# Median of per-second CPU (percent of one core) and peak resident memory of
# the process that runs the player (the child of xvfb-run's shell).
sample() {
  local label=$1
  shift
  xvfb "$@" >"$out/$label.log" 2>&1 &
  local wrapper=$! pid=""
  for _ in $(seq 100); do
    pid=$(pgrep -n -f "^$driver" || true)
    [ -n "$pid" ] && break
    sleep 0.1
  done
  local hz prev now hwm samples=()
  hz=$(getconf CLK_TCK)
  prev=$(awk '{print $14+$15}' "/proc/$pid/stat")
  local peak=0
  while kill -0 "$pid" 2>/dev/null; do
    sleep 1
    now=$(awk '{print $14+$15}' "/proc/$pid/stat" 2>/dev/null) || break
    [ -n "$now" ] || break
    # An exiting process has no VmHWM line any more; keep the last reading.
    hwm=$(awk '/VmHWM/ {print $2}' "/proc/$pid/status" 2>/dev/null || true)
    [ -n "$hwm" ] && peak=$hwm
    samples+=($(( (now - prev) * 100 / hz )))
    prev=$now
  done
  wait "$wrapper" || true
  local median
  median=$(printf '%s\n' "${samples[@]:5}" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}')
  echo "$label: median CPU ${median}% of one core over ${#samples[@]} s (first 5 s skipped), peak RSS $((peak / 1024)) MB"
}

# The video to measure: the first recommended one (of the first three pages)
# with thousands of danmaku that plays as a single 720p file. Chosen here
# with the command-line client, so the app's process does no extra work.
cli=("$build/bin/oldzuvi-cli" --endpoints "$endpoints" --settings "$out/cli.ini")
chosen=$(
  for page in 1 2 3; do
    "${cli[@]}" recommended --page "$page" --page-size 60 |
      python3 -c 'import json,sys; [print(v["bvid"], v["cid"]) for v in json.load(sys.stdin)]'
  done | while read -r bvid cid; do
    count=$("${cli[@]}" danmaku --cid "$cid" --summary |
      python3 -c 'import json,sys; print(json.load(sys.stdin).get("count", 0))')
    [ "$count" -ge 5000 ] || continue
    "${cli[@]}" playurl --bvid "$bvid" --cid "$cid" | python3 -c '
import json, sys
answer = json.load(sys.stdin)
if answer.get("quality", 0) >= 64:
    print(sys.argv[1], sys.argv[2], answer["url"])' "$bvid" "$cid" | grep . && break
  done
)
[ -n "$chosen" ] || { echo "no dense 720p video in the first three pages" >&2; exit 1; }
read -r bvid cid clip <<<"$chosen"
video=(--bvid "$bvid" --cid "$cid")

sample app "$driver" --endpoints "$endpoints" --out "$out/measure" --measure 60 "${video[@]}" |
  tee "$out/measure.txt"
sample app-no-danmaku "$driver" --endpoints "$endpoints" --out "$out/measure-off" --measure 60 \
  "${video[@]}" --no-danmaku | tee -a "$out/measure.txt"
# The player's controls kept up the whole time instead of hiding after 3 s:
# what drawing them over every picture costs.
sample app-controls-shown "$driver" --endpoints "$endpoints" --out "$out/measure-shown" \
  --measure 60 "${video[@]}" --controls-shown | tee -a "$out/measure.txt"
# The bare player plays exactly the file the app played.
sample bare "$driver" --bare "$clip" --measure 60 | tee -a "$out/measure.txt"
# The same bare player with its pipeline bounded as the app bounds its own:
# what the app's screens cost beyond playback itself.
sample bare-trimmed "$driver" --bare "$clip" --measure 60 --trimmed | tee -a "$out/measure.txt"

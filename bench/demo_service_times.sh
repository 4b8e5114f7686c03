#!/usr/bin/env bash
# Whole-process figures of the demo service: start-up time (from exec to the
# "listening" line, then to the first answer) and answer times of thumbnails
# and of the densest danmaku document, each the median of repeated runs
# measured with curl. Usage: bench/demo_service_times.sh [BUILD_DIR]
set -euo pipefail
build=${1:-build}
bin="$build/bin/oldzuvi-demo-service"
media="$build/media"
work=$(mktemp -d)
pid=
# A failure half-way must not leave a service running.
trap '[ -n "$pid" ] && kill "$pid" 2>/dev/null; rm -rf "$work"' EXIT

median() { sort -n | awk '{a[NR]=$1} END {m = NR % 2 ? a[(NR+1)/2] : (a[NR/2]+a[NR/2+1])/2; printf "%.2f", m}'; }

# Starts a service on a free port; sets pid and base.
start_service() {
  local fifo="$work/out.$RANDOM"
  mkfifo "$fifo"
  "$bin" --port 0 --media "$media" > "$fifo" &
  pid=$!
  exec 3< "$fifo"
  local line
  read -r line <&3
  base=${line##* }
}
stop_service() { kill "$pid"; wait "$pid" 2>/dev/null || true; pid=; exec 3<&-; }

startup=() first=()
for _ in $(seq 20); do
  t0=$(date +%s%N)
  start_service
  t1=$(date +%s%N)
  curl -s -o /dev/null "$base/x/web-interface/popular?pn=1&ps=20"
  t2=$(date +%s%N)
  stop_service
  startup+=("$(( (t1 - t0) / 1000 ))") first+=("$(( (t2 - t0) / 1000 ))")
done
echo "start-up to listening: median $(printf '%s\n' "${startup[@]}" | awk '{print $1/1000}' | median) ms (20 runs)"
echo "start-up to first list answer: median $(printf '%s\n' "${first[@]}" | awk '{print $1/1000}' | median) ms (20 runs)"

start_service
rss() { awk '/VmRSS/ {printf "%.1f MB", $2 / 1024}' "/proc/$pid/status"; }
echo "resident memory after start: $(rss)"
ms() { awk '{print $1 * 1000}'; }
bvids=$(curl -s "$base/x/web-interface/popular?pn=1&ps=100" | grep -o '"bvid":"[^"]*"' | cut -d'"' -f4)
echo "cover thumbnail 320x180, first ask (drawn and encoded): median $(for b in $bvids; do curl -s -o /dev/null -w '%{time_total}\n' "$base/img/cover/$b.jpg@320w_180h_1c_80q.jpg"; done | ms | median) ms (100 covers)"
one=$(echo "$bvids" | head -1)
echo "cover thumbnail 320x180, asked again (cached): median $(for _ in $(seq 100); do curl -s -o /dev/null -w '%{time_total}\n' "$base/img/cover/$one.jpg@320w_180h_1c_80q.jpg"; done | ms | median) ms (100 runs)"
densest=0 densest_cid=0
for page in 1 2 3; do
  for cid in $(curl -s "$base/x/web-interface/popular?pn=$page&ps=100" | grep -o '"cid":[0-9]*' | cut -d: -f2); do
    n=$(curl -s "$base/x/v1/dm/list.so?oid=$cid" | { grep -o '<d ' || true; } | wc -l)
    if [ "$n" -gt "$densest" ]; then densest=$n densest_cid=$cid; fi
  done
done
echo "resident memory after every list's danmaku document and 100 covers were served: $(rss)"
echo "densest danmaku document: cid $densest_cid, $densest items, $(curl -s "$base/x/v1/dm/list.so?oid=$densest_cid" | wc -c) bytes"
echo "  asked again (cached): median $(for _ in $(seq 100); do curl -s -o /dev/null -w '%{time_total}\n' "$base/x/v1/dm/list.so?oid=$densest_cid"; done | ms | median) ms (100 runs)"
stop_service
cold=()
for _ in $(seq 15); do
  start_service
  cold+=("$(curl -s -o /dev/null -w '%{time_total}' "$base/x/v1/dm/list.so?oid=$densest_cid")")
  stop_service
done
echo "  first ask on a fresh service (generated): median $(printf '%s\n' "${cold[@]}" | ms | median) ms (15 runs)"

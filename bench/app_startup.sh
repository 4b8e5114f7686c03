#!/usr/bin/env bash
# Whole-process start-up figures of oldzuvi against the demo service, under
# Xvfb: the time from exec to the first recommended page drawn on screen, and
# the resident memory at that moment; the median of five launches, each with
# a fresh settings store (a first launch). Usage: bench/app_startup.sh [BUILD_DIR] [pad|phone]
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
idiom=${2:-pad}
port=${OLDZUVI_BENCH_PORT:-8478}
work=$(mktemp -d)
endpoints="$work/endpoints.json"
mkdir -p "$build/media"

"$build/bin/oldzuvi-demo-service" --port "$port" --data "$work/data" --media "$build/media" \
  --write-endpoints "$endpoints" > "$work/service.log" 2>&1 &
service_pid=$!
Xvfb :97 -screen 0 1280x1024x24 -nolisten tcp > /dev/null 2>&1 &
xvfb_pid=$!
cleanup() {
  kill "$service_pid" "$xvfb_pid" 2>/dev/null || true
  wait "$service_pid" "$xvfb_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
for _ in $(seq 100); do [ -s "$endpoints" ] && break; sleep 0.05; done
sleep 0.5

median() { sort -n | awk '{a[NR]=$1} END {m = NR % 2 ? a[(NR+1)/2] : (a[NR/2]+a[NR/2+1])/2; printf "%.0f", m}'; }
shown=() rss=()
for run in 1 2 3 4 5; do
  t0=$(date +%s%3N)
  line=$(DISPLAY=:97 OLDZUVI_STARTUP_REPORT=exit XDG_CACHE_HOME="$work/cache$run" \
    "$build/bin/oldzuvi" --endpoints "$endpoints" --idiom "$idiom" \
    --settings "$work/settings$run.ini" 2>/dev/null | grep first-page-shown)
  epoch=$(sed -n 's/.*epoch_ms=\([0-9]*\).*/\1/p' <<< "$line")
  shown+=("$((epoch - t0))")
  rss+=("$(sed -n 's/.*rss_kb=\([0-9]*\).*/\1/p' <<< "$line")")
  echo "run $run: first page shown after $((epoch - t0)) ms, resident ${rss[-1]} kB"
done
echo "launch to first grid page shown ($idiom): median $(printf '%s\n' "${shown[@]}" | median) ms (5 runs)"
echo "resident memory then: median $(printf '%s\n' "${rss[@]}" | median | awk '{printf "%.1f", $1/1024}') MB (5 runs)"

#!/usr/bin/env bash
# Starts the demo service and takes review screenshots of the application's
# main states under Xvfb: the recommended grid on a tablet at 1024 and at 899
# points wide (4 and 3 columns), the phone's one-column list, a search result
# page, and the loading, empty and error states.
# Usage: tools/screenshots/take-screenshots.sh BUILD_DIR OUT_DIR
set -euo pipefail

build=$(cd "${1:?usage: take-screenshots.sh BUILD_DIR OUT_DIR}" && pwd)
out=${2:?usage: take-screenshots.sh BUILD_DIR OUT_DIR}
mkdir -p "$out"
out=$(cd "$out" && pwd)
service="$build/bin/oldzuvi-demo-service"
shots="$build/bin/oldzuvi-screenshots"
port=${OLDZUVI_SCREENSHOT_PORT:-8479}
work=$(mktemp -d)
endpoints="$work/endpoints.json"
feed=/x/web-interface/index/top/feed/rcmd

for program in "$service" "$shots"; do
  [ -x "$program" ] || { echo "take-screenshots: $program is missing; run ./run build" >&2; exit 1; }
done
mkdir -p "$build/media"

"$service" --port "$port" --data "$work/data" --media "$build/media" \
  --write-endpoints "$endpoints" > "$work/service.log" 2>&1 &
service_pid=$!
cleanup() {
  kill "$service_pid" 2>/dev/null || true
  wait "$service_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
for _ in $(seq 100); do
  [ -s "$endpoints" ] && break
  kill -0 "$service_pid" 2>/dev/null || { echo "take-screenshots: the demo service did not start" >&2; exit 1; }
  sleep 0.05
done

# shot NAME IDIOM WxH [tool arguments...]: one run of the app, one picture.
shot() {
  local name=$1 idiom=$2 size=$3
  shift 3
  # A settings store of its own, so every shot starts like a first launch.
  xvfb-run -a -s "-screen 0 1280x1024x24" \
    "$shots" --endpoints "$endpoints" --idiom "$idiom" --settings "$work/$name.ini" \
    --size "$size" --out "$out/$name.png" "$@"
  echo "take-screenshots: $out/$name.png"
}
# sign_in NAME: before shot NAME, stores a signed-in session in that shot's
# settings, through the demo service's QR login and its confirmation.
sign_in() {
  local settings="$work/$1.ini" lines="$work/$1.login"
  "$build/bin/oldzuvi-cli" --endpoints "$endpoints" --settings "$settings" login \
    > "$lines" 2> /dev/null &
  local pid=$!
  for _ in $(seq 200); do
    [ -s "$lines" ] && break
    sleep 0.05
  done
  "$service" confirm --port "$port" > /dev/null
  wait "$pid"
}
fail_feed() { "$service" fail "$feed" "$1" --port "$port" > /dev/null; }

shot grid-pad-1024 pad 1024x768
shot grid-pad-899 pad 899x768
shot grid-phone phone 320x568
shot search-pad pad 1024x768 --search 游戏
shot search-phone phone 320x568 --search 游戏
shot state-empty-search pad 1024x768 --search "zzqx 无此视频"
fail_feed slow:15000
shot state-loading pad 1024x768 --wait loading --settle 600
fail_feed code:-500
shot state-error pad 1024x768 --wait error --settle 300
shot state-error-phone phone 320x568 --wait error --settle 300
"$service" fail off --port "$port" > /dev/null

# Each screen adds its shots in a shots-<area>.sh of its own beside this
# script, using shot(), fail_feed and the variables above; they run in name
# order, each starting with every failure switch off.
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
for extra in "$here"/shots-*.sh; do
  [ -e "$extra" ] || continue
  # shellcheck source=/dev/null
  source "$extra"
  "$service" fail off --port "$port" > /dev/null
done

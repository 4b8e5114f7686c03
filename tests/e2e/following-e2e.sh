#!/usr/bin/env bash
# End-to-end run of the following tab under Xvfb against the demo service:
# signed in, every kind of card with its pictures, the next page by offset,
# the "动态" segment; signed out, the login card. With --measure, also the
# frame intervals of flicking through three pages and the peak memory,
# beside the recommended grid's.
# Usage: tests/e2e/following-e2e.sh BUILD_DIR OUT_DIR [--measure]
set -euo pipefail

build=$(cd "${1:?usage: following-e2e.sh BUILD_DIR OUT_DIR [--measure]}" && pwd)
out=${2:?usage: following-e2e.sh BUILD_DIR OUT_DIR [--measure]}
measure=${3:-}
# Port 0: the service takes a free one, read back from its endpoints file.
port=${OLDZUVI_E2E_PORT:-0}
mkdir -p "$out"
out=$(cd "$out" && pwd)
service="$build/bin/oldzuvi-demo-service"
driver="$build/bin/zuvi-following-e2e"
endpoints="$out/endpoints.json"
rm -rf "$endpoints" "$out"/*.ini "$out/demo-data"
mkdir -p "$build/media"

"$service" --port "$port" --data "$out/demo-data" --media "$build/media" \
  --write-endpoints "$endpoints" >"$out/demo-service.log" 2>&1 &
service_pid=$!
trap 'kill $service_pid 2>/dev/null || true; wait $service_pid 2>/dev/null || true' EXIT
for _ in $(seq 100); do [ -s "$endpoints" ] && break; sleep 0.05; done
[ -s "$endpoints" ] || { echo "following-e2e: the demo service did not start" >&2; exit 1; }
port=$(grep -o '127\.0\.0\.1:[0-9]*' "$endpoints" | head -1 | cut -d: -f2)

# Signs a settings store in through the demo's QR login and its confirmation.
sign_in() {
  local settings=$1 lines="$1.login"
  "$build/bin/oldzuvi-cli" --endpoints "$endpoints" --settings "$settings" login >"$lines" 2>/dev/null &
  local pid=$!
  for _ in $(seq 200); do [ -s "$lines" ] && break; sleep 0.05; done
  "$service" confirm --port "$port" >/dev/null
  wait "$pid"
}
run() {
  local settings=$1
  shift
  xvfb-run -a -s "-screen 0 1280x1024x24" "$driver" --endpoints "$endpoints" \
    --settings "$settings" --idiom pad --out "$out" "$@"
}

sign_in "$out/signed-in.ini"
run "$out/signed-in.ini" --check
run "$out/signed-out.ini" --check --signed-out

[ "$measure" = "--measure" ] || exit 0
for round in 1 2 3; do
  run "$out/signed-in.ini" --flick | sed "s/^/round $round /"
  run "$out/signed-in.ini" --flick --grid | sed "s/^/round $round /"
done

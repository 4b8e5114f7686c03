#!/usr/bin/env bash
# End-to-end run of the operator messages under Xvfb against the demo
# service, with the demo's information keys (a poll every 20 s): the first
# start shows the demo's first message and then one announced while it runs,
# lists both in the history, shows the picture in the detail and, in
# developer mode, a request failure in the debug log; a second start on the
# same store shows no card again. Screenshots of each step go to OUT_DIR.
# Usage: tests/e2e/messages-e2e.sh BUILD_DIR OUT_DIR
set -euo pipefail

build=$(cd "${1:?usage: messages-e2e.sh BUILD_DIR OUT_DIR}" && pwd)
out=${2:?usage: messages-e2e.sh BUILD_DIR OUT_DIR}
root=$(cd "$(dirname "$0")/../.." && pwd)
port=${OLDZUVI_E2E_PORT:-18471}
mkdir -p "$out"
out=$(cd "$out" && pwd)
rm -rf "$out/demo-data" "$out/app"

service="$build/bin/oldzuvi-demo-service"
endpoints="$out/endpoints.json"
rm -f "$endpoints"
"$service" --port "$port" --data "$out/demo-data" --media "$build/media" \
  --write-endpoints "$endpoints" >"$out/demo-service.log" 2>&1 &
service_pid=$!
trap 'kill $service_pid 2>/dev/null || true; wait $service_pid 2>/dev/null || true' EXIT
for _ in $(seq 100); do [ -s "$endpoints" ] && break; sleep 0.05; done

run() {
  OLDZUVI_INFO="$root/demo/Info-demo.json" xvfb-run -a -s "-screen 0 1280x800x24" \
    "$build/bin/zuvi-messages-e2e" --endpoints "$endpoints" --out "$out/app" \
    --demo-service "$service" --port "$port" --phase "$1"
}
run first
run restart

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
mkdir -p "$out"
out=$(cd "$out" && pwd)
rm -rf "$out/app"
. "$(dirname "$0")/demo-service.sh"
start_demo_service "$build" "$out"

run() {
  OLDZUVI_INFO="$root/demo/Info-demo.json" xvfb "$build/bin/zuvi-messages-e2e" \
    --endpoints "$endpoints" --out "$out/app" --demo-service "$service" --port "$port" \
    --phase "$1"
}
run first
run restart

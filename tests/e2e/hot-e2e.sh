#!/usr/bin/env bash
# End-to-end run of the ranking tab under Xvfb against the demo service:
# signed out, signing in, the popular list, a region's ranking and the
# region settings' order (see zuvi_hot_e2e.cpp), with a screenshot per step.
# Usage: tests/e2e/hot-e2e.sh BUILD_DIR OUT_DIR
set -euo pipefail

build=$(cd "${1:?usage: hot-e2e.sh BUILD_DIR OUT_DIR}" && pwd)
out=${2:?usage: hot-e2e.sh BUILD_DIR OUT_DIR}
root=$(cd "$(dirname "$0")/../.." && pwd)
port=${OLDZUVI_E2E_PORT:-18471}
mkdir -p "$out"
out=$(cd "$out" && pwd)

"$root/demo/make-media.sh" "$build/media" >/dev/null
endpoints="$out/endpoints.json"
rm -rf "$endpoints" "$out/demo-data"
"$build/bin/oldzuvi-demo-service" --port "$port" --data "$out/demo-data" \
  --media "$build/media" --write-endpoints "$endpoints" >"$out/demo-service.log" 2>&1 &
service=$!
trap 'kill $service 2>/dev/null || true; wait $service 2>/dev/null || true' EXIT
for _ in $(seq 100); do [ -s "$endpoints" ] && break; sleep 0.05; done

xvfb-run -a -s "-screen 0 1280x800x24" "$build/bin/zuvi-hot-e2e" --endpoints "$endpoints" \
  --out "$out" | tee "$out/steps.txt"
exit "${PIPESTATUS[0]}"

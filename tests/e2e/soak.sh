#!/usr/bin/env bash
# Soak run: the demo service and the app under Xvfb, many videos opened and
# left in one app process (see zuvi_soak.cpp), resident memory after each.
# Usage: tests/e2e/soak.sh BUILD_DIR OUT_DIR [CYCLES]
set -euo pipefail

build=$(cd "${1:?usage: soak.sh BUILD_DIR OUT_DIR [CYCLES]}" && pwd)
out=${2:?usage: soak.sh BUILD_DIR OUT_DIR [CYCLES]}
cycles=${3:-100}
root=$(cd "$(dirname "$0")/../.." && pwd)
port=${OLDZUVI_SOAK_PORT:-18490}
mkdir -p "$out"
out=$(cd "$out" && pwd)

"$root/demo/make-media.sh" "$build/media" >/dev/null
endpoints="$out/endpoints.json"
rm -f "$endpoints"
"$build/bin/oldzuvi-demo-service" --port "$port" --data "$out/demo-data" \
  --media "$build/media" --write-endpoints "$endpoints" >"$out/demo-service.log" 2>&1 &
service=$!
trap 'kill $service 2>/dev/null || true; wait $service 2>/dev/null || true' EXIT
for _ in $(seq 100); do [ -s "$endpoints" ] && break; sleep 0.05; done

status=0
xvfb-run -a -s "-screen 0 1280x800x24" "$build/bin/zuvi-soak" --endpoints "$endpoints" \
  --out "$out" --cycles "$cycles" 2>"$out/soak-stderr.log" | tee "$out/soak.txt" || status=$?
if [ "$status" -ne 0 ]; then
  echo "soak: the app exited with status $status (stderr in $out/soak-stderr.log)" >&2
  tail -20 "$out/soak-stderr.log" >&2
fi
exit "$status"

#!/usr/bin/env bash
# Soak run: the demo service and the app under Xvfb, many videos opened and
# left in one app process (see zuvi_soak.cpp), resident memory after each.
# Usage: tests/e2e/soak.sh BUILD_DIR OUT_DIR [CYCLES]
set -euo pipefail

build=$(cd "${1:?usage: soak.sh BUILD_DIR OUT_DIR [CYCLES]}" && pwd)
out=${2:?usage: soak.sh BUILD_DIR OUT_DIR [CYCLES]}
cycles=${3:-100}
mkdir -p "$out"
out=$(cd "$out" && pwd)
. "$(dirname "$0")/demo-service.sh"
start_demo_service "$build" "$out"

status=0
xvfb "$build/bin/zuvi-soak" --endpoints "$endpoints" --out "$out" --cycles "$cycles" \
  2>"$out/soak-stderr.log" | tee "$out/soak.txt" || status=$?
if [ "$status" -ne 0 ]; then
  echo "soak: the app exited with status $status (stderr in $out/soak-stderr.log)" >&2
  tail -20 "$out/soak-stderr.log" >&2
fi
exit "$status"

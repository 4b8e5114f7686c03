#!/usr/bin/env bash
# End-to-end run of the ranking tab under Xvfb against the demo service:
# signed out, signing in, the popular list, a region's ranking and the
# region settings' order (see zuvi_hot_e2e.cpp), with a screenshot per step.
# Usage: tests/e2e/hot-e2e.sh BUILD_DIR OUT_DIR
set -euo pipefail

build=$(cd "${1:?usage: hot-e2e.sh BUILD_DIR OUT_DIR}" && pwd)
out=${2:?usage: hot-e2e.sh BUILD_DIR OUT_DIR}
mkdir -p "$out"
out=$(cd "$out" && pwd)
. "$(dirname "$0")/demo-service.sh"
start_demo_service "$build" "$out"

xvfb "$build/bin/zuvi-hot-e2e" --endpoints "$endpoints" --out "$out" | tee "$out/steps.txt"
exit "${PIPESTATUS[0]}"

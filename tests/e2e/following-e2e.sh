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
mkdir -p "$out"
out=$(cd "$out" && pwd)
rm -rf "$out"/*.ini
driver="$build/bin/zuvi-following-e2e"
. "$(dirname "$0")/demo-service.sh"
start_demo_service "$build" "$out"

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

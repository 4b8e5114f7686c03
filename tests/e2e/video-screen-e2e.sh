#!/usr/bin/env bash
# End-to-end flow of the video screen under Xvfb against the demo service:
# signed out (favourite refused, end inline, replay, fullscreen countdown into
# the related video), then signed in through the demo QR confirmation
# (favourite, watch later, comment, danmaku), and finally the demo service's
# own lists must hold the favourite and the watch-later entry.
# Usage: tests/e2e/video-screen-e2e.sh BUILD_DIR OUT_DIR
set -euo pipefail

build=$(cd "${1:?usage: video-screen-e2e.sh BUILD_DIR OUT_DIR}" && pwd)
out=${2:?usage: video-screen-e2e.sh BUILD_DIR OUT_DIR}
mkdir -p "$out"
out=$(cd "$out" && pwd)
rm -f "$out/settings.ini"
. "$(dirname "$0")/demo-service.sh"
start_demo_service "$build" "$out"

driver=("$build/bin/zuvi-video-screen-e2e" --endpoints "$endpoints" --settings "$out/settings.ini"
  --out "$out")
status=0
xvfb "${driver[@]}" | tee "$out/signed-out.txt" || status=1

cli=("$build/bin/oldzuvi-cli" --endpoints "$endpoints" --settings "$out/settings.ini")
sign_in "$out/settings.ini"

xvfb "${driver[@]}" --signed-in | tee "$out/signed-in.txt" || status=1

# The service's own lists must now hold the video the signed-in phase opened.
bvid=$(awk '/^video: / {print $2; exit}' "$out/signed-in.txt")
for list in watch-later favorites; do
  if "${cli[@]}" "$list" | grep -q "$bvid"; then
    echo "ok: the service's $list holds $bvid"
  else
    echo "FAIL: the service's $list lacks $bvid"
    status=1
  fi
done | tee "$out/service-state.txt"
grep -q FAIL "$out/service-state.txt" && status=1
exit $status

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
root=$(cd "$(dirname "$0")/../.." && pwd)
# A free port by default: other runs may share the machine.
port=${OLDZUVI_E2E_PORT:-0}
mkdir -p "$out"
out=$(cd "$out" && pwd)
rm -f "$out/settings.ini" "$out/endpoints.json"

"$root/demo/make-media.sh" "$build/media" >/dev/null
endpoints="$out/endpoints.json"
service="$build/bin/oldzuvi-demo-service"
"$service" --port "$port" --data "$out/demo-data" --media "$build/media" \
  --write-endpoints "$endpoints" >"$out/demo-service.log" 2>&1 &
service_pid=$!
trap 'kill $service_pid 2>/dev/null || true; wait $service_pid 2>/dev/null || true' EXIT
for _ in $(seq 200); do [ -s "$endpoints" ] && break; sleep 0.05; done
[ -s "$endpoints" ] || { echo "video-screen-e2e: the demo service did not start" >&2; exit 1; }
# The port the service took, for its confirm command.
port=$(python3 -c 'import json,sys,urllib.parse; print(urllib.parse.urlparse(json.load(open(sys.argv[1]))["api"]).port)' "$endpoints")

driver=("$build/bin/zuvi-video-screen-e2e" --endpoints "$endpoints" --settings "$out/settings.ini"
  --out "$out")
xvfb() { xvfb-run -a -s "-screen 0 1280x800x24" "$@"; }
status=0
xvfb "${driver[@]}" | tee "$out/signed-out.txt" || status=1

cli=("$build/bin/oldzuvi-cli" --endpoints "$endpoints" --settings "$out/settings.ini")
"${cli[@]}" login >"$out/login.txt" 2>/dev/null &
login=$!
for _ in $(seq 200); do [ -s "$out/login.txt" ] && break; sleep 0.05; done
"$service" confirm --port "$port" >/dev/null
wait "$login"

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

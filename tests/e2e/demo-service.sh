# Sourced by the end-to-end scripts beside it: the demo service for one run.
#
#   start_demo_service BUILD OUT  starts the service on $OLDZUVI_E2E_PORT (by
#       default a free port, as other runs may share the machine) with its
#       data under OUT/demo-data and the generated clips, waits for its
#       endpoints file and sets $endpoints, $port and $service (the binary);
#       the service stops when the script exits.
#   sign_in SETTINGS  signs a settings store in through the QR login, with
#       the service's confirm command as the phone.
#   xvfb COMMAND...  runs a command on a virtual display.

start_demo_service() {
  demo_build=$1
  local out=$2 root
  root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
  service="$demo_build/bin/oldzuvi-demo-service"
  endpoints="$out/endpoints.json"
  rm -rf "$endpoints" "$out/demo-data"
  "$root/demo/make-media.sh" "$demo_build/media" >/dev/null
  "$service" --port "${OLDZUVI_E2E_PORT:-0}" --data "$out/demo-data" --media "$demo_build/media" \
    --write-endpoints "$endpoints" >"$out/demo-service.log" 2>&1 &
  service_pid=$!
  trap 'kill $service_pid 2>/dev/null || true; wait $service_pid 2>/dev/null || true' EXIT
  for _ in $(seq 200); do [ -s "$endpoints" ] && break; sleep 0.05; done
  [ -s "$endpoints" ] || { echo "$(basename "$0"): the demo service did not start" >&2; exit 1; }
  port=$(grep -o '127\.0\.0\.1:[0-9]*' "$endpoints" | head -1 | cut -d: -f2)
}

sign_in() {
  local settings=$1 lines="$1.login"
  "$demo_build/bin/oldzuvi-cli" --endpoints "$endpoints" --settings "$settings" login \
    >"$lines" 2>/dev/null &
  local pid=$!
  for _ in $(seq 200); do [ -s "$lines" ] && break; sleep 0.05; done
  "$service" confirm --port "$port" >/dev/null
  wait "$pid"
}

xvfb() { xvfb-run -a -s "-screen 0 1280x800x24" "$@"; }

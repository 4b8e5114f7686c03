#!/usr/bin/env bash
# Starts the demo service, writes the endpoints file for it and runs the app
# against it; stops the service when the app exits. Without an app binary the
# service stays in the foreground and this prints what to try.
# Usage: demo/start-demo.sh BUILD_DIR [app arguments...]
set -euo pipefail

build=$(cd "${1:?usage: start-demo.sh BUILD_DIR [app args...]}" && pwd)
shift
service="$build/bin/oldzuvi-demo-service"
app="$build/bin/oldzuvi"
cli="$build/bin/oldzuvi-cli"
port=${OLDZUVI_DEMO_PORT:-8470}
data=${OLDZUVI_DEMO_DATA:-$build/demo-data}
endpoints="$build/demo-endpoints.json"

if [ ! -x "$service" ]; then
  echo "start-demo: $service is missing; build it with ./run build" >&2
  exit 1
fi

rm -f "$endpoints"
"$service" --port "$port" --data "$data" --media "$build/media" \
  --write-endpoints "$endpoints" &
service_pid=$!
stop_service() {
  kill "$service_pid" 2>/dev/null || true
  wait "$service_pid" 2>/dev/null || true
}
trap stop_service EXIT
trap 'exit 130' INT TERM

# The endpoints file appears once the service listens.
for _ in $(seq 100); do
  [ -s "$endpoints" ] && break
  if ! kill -0 "$service_pid" 2>/dev/null; then
    echo "start-demo: the demo service did not start (is port $port taken? set OLDZUVI_DEMO_PORT)" >&2
    exit 1
  fi
  sleep 0.05
done

if [ -x "$app" ]; then
  # The demo asks for its configuration every 20 s, so an announced message
  # shows in the running app within half a minute.
  OLDZUVI_INFO="$(dirname "$0")/Info-demo.json" "$app" --endpoints "$endpoints" "$@"
  exit $?
fi

cat <<HINTS

The app ($app) is not built yet; the demo service keeps running on
http://127.0.0.1:$port until you press Ctrl-C. Things to try:

  $cli --endpoints $endpoints popular
  $cli --endpoints $endpoints search --keyword 游戏
  $cli --endpoints $endpoints danmaku --summary --cid CID   (CID: the "cid" of any listed video)
  $cli --endpoints $endpoints login          (then: $service confirm --port $port)
  curl http://127.0.0.1:$port/config/remote_config.json
  $service announce "新消息" [--image URL] --port $port
  $service fail /x/web-interface/popular code:-500 --port $port
  $service state --port $port

HINTS
wait "$service_pid"

# Shots of the settings, the operator messages and the developer screens
# (sourced by take-screenshots.sh, which provides shot(), fail_feed and the
# variables used here).

# shot_with_store NAME STORE SCENARIO: like shot, on the settings store of an
# earlier shot, so that one run can follow from what another saw.
shot_with_store() {
  local name=$1 store=$2 scenario=$3
  xvfb-run -a -s "-screen 0 1280x1024x24" \
    "$shots" --endpoints "$endpoints" --idiom pad --settings "$work/$store.ini" \
    --size 1024x768 --out "$out/$name.png" --scenario "$scenario"
  echo "take-screenshots: $out/$name.png"
}

shot settings-pad pad 1024x768 --scenario settings
# The first start sees the demo's first message, picture and text.
shot message-card-pad pad 1024x768 --scenario message-card
# A second message arrives; the next start of the same store sees it too.
"$service" announce "第二条演示通知：今晚 23:00 起维护半小时，期间弹幕可能暂时无法发送。" \
  --port "$port" > /dev/null
shot_with_store notification-history-pad message-card-pad notification-history
shot_with_store remote-config-debug-pad message-card-pad remote-config-debug
shot_with_store settings-developer-pad message-card-pad settings-developer
fail_feed code:-500
shot debug-log-pad pad 1024x768 --scenario debug-log

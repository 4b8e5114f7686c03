# Danmaku settings, each on its own, in the preview tool over one dense
# document (sourced by take-screenshots.sh, which defines build, out, here).
preview_shot() {
  local name=$1
  shift
  OLDZUVI_PREVIEW_SHOT_AT=8 "$here/../danmaku-preview/screenshot.sh" \
    "$build" "$out/$name.png" pad "$@" > /dev/null
  echo "take-screenshots: $out/$name.png"
}

preview_shot danmaku-effect-default
preview_shot danmaku-effect-opacity-40 --opacity 40
preview_shot danmaku-effect-text-size-160 --text-size 160
preview_shot danmaku-effect-area-quarter --area quarter
preview_shot danmaku-effect-fixed-only --hide scrolling
preview_shot danmaku-effect-merge-block --merge --block 2333 --block "/^哈+$/" --block "/(/"
preview_shot danmaku-effect-reduced-motion --reduced-motion
preview_shot danmaku-effect-panel --panel --opacity 80 --block 剧透 --block "/(/"

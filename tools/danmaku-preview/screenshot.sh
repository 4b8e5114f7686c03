#!/bin/sh
# Usage: screenshot.sh BUILD_DIR OUT.png [idiom [preview options...]]
# Writes a dense danmaku document (scrolling, top and bottom items, in many
# colours and sizes), plays it in oldzuvi-danmaku-preview under Xvfb from
# 20 s in, and saves a grab of the window taken 15 s later (or
# OLDZUVI_PREVIEW_SHOT_AT seconds), when the stream has settled (labels from
# the first seconds have flown out), to OUT.png. Options after the idiom go
# to the preview tool (--opacity 40, --area half, --reduced-motion, ...).
set -eu

if [ $# -lt 2 ]; then
  echo "usage: $0 BUILD_DIR OUT.png [pad|phone]" >&2
  exit 2
fi
build_dir=$1
out=$2
idiom=${3:-pad}
shift $(( $# < 3 ? $# : 3 ))
shot_at=${OLDZUVI_PREVIEW_SHOT_AT:-15}
preview="$build_dir/bin/oldzuvi-danmaku-preview"
[ -x "$preview" ] || { echo "$preview is not built" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
document="$work/dense.xml"

# 600 items over 80 s: 60 % scrolling (mode 1), 20 % top (5), 17 % bottom
# (4), 3 % never drawn (7); a fixed seed keeps every run the same. About 7
# new items a second keep the screen near the visible cap without leaving the
# fixed lanes starved by long scrolling flights.
awk 'BEGIN {
  srand(20261122)
  n = split("前方高能|哈哈哈哈哈哈|awsl|这个转场太丝滑了吧|第一次看到这么好看的画面，收藏了|" \
            "2333|来了来了|good job|空降成功|弹幕护体|作者辛苦了，每一帧都是壁纸|" \
            "what a shot, seriously|？？？|名场面|bgm是什么，求告知|" \
            "这一段我能看一百遍，真的一百遍，不骗你|字幕君来了|高能预警", texts, "|")
  split("16777215 16777215 16777215 16711680 16776960 65280 65535 16744192 13369599 0", colours, " ")
  print "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
  print "<i><chatserver>local</chatserver>"
  for (i = 0; i < 600; i++) {
    t = rand() * 80
    roll = rand()
    mode = roll < 0.60 ? 1 : roll < 0.80 ? 5 : roll < 0.97 ? 4 : 7
    size = 16 + int(rand() * 3) * 2
    colour = colours[1 + int(rand() * 10)]
    # Top and bottom items say where they belong, so a picture shows which is which.
    text = texts[1 + int(rand() * n)]
    if (mode == 5) text = "【顶】" text
    if (mode == 4) text = "【底】" text
    printf "<d p=\"%.3f,%d,%d,%d,1700000000,0,abc,%d\">%s</d>\n", t, mode, size, colour, 1000 + i, text
  }
  print "</i>"
}' > "$document"

xvfb-run -a -s "-screen 0 1280x1024x24" \
  "$preview" "$document" --idiom "$idiom" --start 20 --screenshot-at "$shot_at" \
  --screenshot "$out" "$@"

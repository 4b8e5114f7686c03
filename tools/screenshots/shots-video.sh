# The video screen's pictures, from a real run against the demo service
# (sourced by take-screenshots.sh, which defines shot and sign_in).
shot video-side-pad pad 1024x768 --scenario video --argument side --settle 2500
shot video-comments-phone phone 320x568 --scenario video --argument comments --settle 1500
shot video-end-inline pad 1024x768 --scenario video --argument end-inline --settle 1500
# Shortly after the end, while the countdown badge still counts.
shot video-end-fullscreen pad 1024x768 --scenario video --argument end-fullscreen --settle 900
shot video-fastforward pad 1024x768 --scenario video --argument fastforward --settle 600
# A related list that failed offers its retry on the status row.
"$service" fail /x/web-interface/archive/related code:-500 --port "$port" > /dev/null
shot video-related-failed pad 1024x768 --scenario video --argument side --settle 2500
"$service" fail off --port "$port" > /dev/null
sign_in video-action-dialog
shot video-action-dialog pad 1024x768 --scenario video --argument dialog --settle 800
# The viewer's danmaku settings over a playing video, and the density graph
# along the seek bar.
shot danmaku-settings-pad pad 1024x768 --scenario video --argument danmaku-settings --settle 1500
shot danmaku-density-pad pad 1024x768 --scenario video --argument danmaku-density --settle 1500
# The player's speed menu open over a playing video, the volume control beside it.
shot player-menus-pad pad 1024x768 --scenario video --argument player-menus --settle 1200

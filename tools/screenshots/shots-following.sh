# The following tab, signed in: "全部" on a tablet, the phone's video feed,
# and the "动态" segment (sourced by take-screenshots.sh).
sign_in following-pad
shot following-pad pad 1024x768 --scenario following --argument 0 --settle 2000
sign_in following-phone
shot following-phone phone 320x568 --scenario following --argument 0 --settle 2000
sign_in following-dynamic-pad
shot following-dynamic-pad pad 1024x768 --scenario following --argument 2 --settle 2000

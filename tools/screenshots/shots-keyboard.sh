# The keyboard help card over the recommended grid, on a tablet and on a
# phone, where the card scrolls (sourced by take-screenshots.sh).
shot keyboard-help-pad pad 1024x768 --scenario keyboard-help
shot keyboard-help-phone phone 320x568 --scenario keyboard-help

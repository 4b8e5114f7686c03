# The keyboard help card over the recommended grid (sourced by take-screenshots.sh).
shot keyboard-help-pad pad 1024x768 --scenario keyboard-help

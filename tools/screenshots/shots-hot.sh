# The ranking tab's shots (sourced by take-screenshots.sh): a region's
# ranking sorted by play count and the popular list on a phone, both signed
# in; the login card of a signed-out user; the region settings screen.
sign_in hot-pad
shot hot-pad pad 1024x768 --scenario hot --argument 1005,1
sign_in hot-phone
shot hot-phone phone 320x568 --scenario hot --argument popular
shot hot-login-required pad 1024x768 --scenario hot-login-required
shot hot-region-settings pad 1024x768 --scenario hot-region-settings

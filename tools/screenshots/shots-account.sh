# The account screens' shots; sourced by take-screenshots.sh.

# The login screen with a live code, which must read back as the demo
# service's login address.
shot login-pad pad 1024x768 --scenario account-login --settle 500
decoded=$(zbarimg -q --raw "$out/login-pad.png" || true)
case "$decoded" in
  http://127.0.0.1:"$port"/qr/login\?qrcode_key=*) echo "take-screenshots: login-pad.png reads $decoded" ;;
  *) echo "take-screenshots: the code in login-pad.png reads '$decoded'" >&2; exit 1 ;;
esac

sign_in profile-pad
shot profile-pad pad 1024x768 --scenario account-profile
sign_in profile-phone
shot profile-phone phone 320x568 --scenario account-profile
shot profile-logged-out pad 1024x768 --scenario account-profile
sign_in account-history-pad
shot account-history-pad pad 1024x768 --scenario account-history

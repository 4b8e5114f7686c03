#!/usr/bin/env bash
# Installs the build into a fresh prefix and checks what a desktop finds
# there: the three programs, a launcher entry that validates and names an
# installed program and icon, the icon itself, and software-centre metadata
# that validates and points back at the launcher entry.
#   usage: install-check.sh BUILD_DIR
set -euo pipefail
build=${1:?usage: install-check.sh BUILD_DIR}
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
id=org.oldzuvi.oldzuvi

fail() { echo "install-check: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" > /dev/null

for program in oldzuvi oldzuvi-cli oldzuvi-demo-service; do
  [ -x "$prefix/bin/$program" ] || fail "bin/$program is missing"
done

desktop="$prefix/share/applications/$id.desktop"
[ -f "$desktop" ] || fail "the launcher entry is missing"
desktop-file-validate "$desktop" || fail "the launcher entry does not validate"
exec_program=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$desktop")
[ -x "$prefix/bin/$exec_program" ] || fail "Exec=$exec_program is not an installed program"
icon_name=$(sed -n 's/^Icon=//p' "$desktop")
icon="$prefix/share/icons/hicolor/scalable/apps/$icon_name.svg"
[ -f "$icon" ] || fail "Icon=$icon_name is not an installed scalable icon"
grep -q '<svg' "$icon" || fail "the icon is not an SVG picture"

metainfo="$prefix/share/metainfo/$id.metainfo.xml"
[ -f "$metainfo" ] || fail "the AppStream metadata is missing"
appstreamcli validate --no-net --pedantic "$metainfo" || fail "the AppStream metadata does not validate"
grep -q "<launchable type=\"desktop-id\">$id.desktop</launchable>" "$metainfo" \
  || fail "the AppStream metadata does not name the launcher entry"

# Nothing of the build's own (libraries, tests, the QML module) is installed.
unexpected=$(cd "$prefix" && find . -type f \
  ! -path "./bin/oldzuvi*" ! -path "./share/applications/*" \
  ! -path "./share/icons/*" ! -path "./share/metainfo/*")
[ -z "$unexpected" ] || fail "unexpected files installed: $unexpected"
echo "install-check: $(cd "$prefix" && find . -type f | wc -l) files installed and valid"

#!/usr/bin/env bash
# Lints the app's QML pages against the built Zuvi module (the build's qml
# import folder holds its qmldir and the C++ types' qmltypes), so that the
# pages' own types and the controllers' properties resolve.
#
# Only errors fail: a page that does not parse, or a module that cannot be
# imported. qmllint's advice (unqualified access, types it cannot see
# through, such as QColor properties in this Qt version) is printed as
# information and left to review.
#   usage: .ci/check-qml.sh [build folder]
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${1:-${OLDZUVI_BUILD_DIR:-$PWD/build}}

QMLLINT=$(command -v qmllint6 || command -v qmllint || echo /usr/lib/qt6/bin/qmllint)
if [ ! -f "$BUILD_DIR/qml/Zuvi/qmldir" ]; then
  echo "[ci] no built Zuvi module in $BUILD_DIR/qml; build first" >&2
  exit 1
fi

advice=()
for category in alias compiler controls-sanity deferred-property-id deprecated \
  inheritance-cycle multiline-strings multiple-attached-objects plugin property \
  required signal type unqualified unused-imports with; do
  advice+=("--$category" info)
done

mapfile -t pages < <(git ls-files 'src/*.qml')
report=$(mktemp)
trap 'rm -f "$report"' EXIT
if ! "$QMLLINT" "${advice[@]}" --import warning -I "$BUILD_DIR/qml" "${pages[@]}" >"$report" 2>&1; then
  # Each finding starts a block ("Kind: file:line:col: text" or, for a
  # syntax error, "file:line:col: text"); the blocks of advice are left out.
  awk '/^[A-Z][a-z]+: |^[^ ^][^ ]*:[0-9]+:[0-9]+: / { show = ($0 !~ /^Info: /) } show' \
    "$report" >&2
  echo "[ci] qmllint found errors in the app's QML" >&2
  exit 1
fi
echo "[ci] ${#pages[@]} QML pages lint without errors" >&2

#!/usr/bin/env bash
# Fails when a tracked C++ file is not formatted as .clang-format says.
# Fix with: git ls-files '*.cpp' '*.h' '*.hpp' | xargs clang-format -i
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -z '*.cpp' '*.h' '*.hpp' | xargs -0 clang-format --dry-run --Werror
echo "[ci] C++ formatting is clean" >&2

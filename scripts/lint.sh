#!/usr/bin/env bash
# Looks for faults without running anything: shellcheck over the scripts, clang-tidy over the C and
# C++ files of the native and windows builds (both must be configured: scripts/build.sh). Files found
# clean are remembered by content in build/lint-cache, so a second run looks only at what changed.
# Usage: lint.sh [FILE…] (clang-tidy over these files only)
set -euo pipefail
cd "$(dirname "$0")/.."

failed=0
if [ $# -eq 0 ]; then
  scripts=()
  while IFS= read -r -d '' file; do
    if [[ $(head -n 1 "$file") =~ ^#!.*[/\ ](ba)?sh ]]; then
      scripts+=("$file")
    fi
  done < <(find scripts .ci examples tools tests virtual_camera bench -type f \
    \( -name '*.sh' -o ! -name '*.*' \) -print0 2>/dev/null || true)
  shellcheck "${scripts[@]}" || failed=1
fi
python3 -B scripts/lint_sources.py "$@" || failed=1
exit "$failed"

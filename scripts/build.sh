#!/usr/bin/env bash
# Builds the named presets of CMakePresets.json (default: windows native) into build/PRESET and
# first installs missing packages. `windows` builds only the products, into build/windows/bin;
# `windows-tests` also builds the examples (example-programs) and tests (test-programs).
# Usage: build.sh [PRESET…]
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = -h ] || [ "${1:-}" = --help ]; then
  sed -n '2,5s/^# //p' "$0"
  exit 0
fi
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(windows native)

scripts/packages.sh
for preset in "${presets[@]}"; do
  echo "== $preset: configure"
  cmake --preset "${preset%-tests}"
  echo "== $preset: build"
  cmake --build --preset "$preset" --parallel "$(nproc)"
done

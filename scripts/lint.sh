#!/usr/bin/env bash
# Static analysis: shellcheck over the shell scripts, pylint over those in
# Python, clang-tidy over the C and C++ files of all builds. Clean files are stored by content in
# ~/.cache/borvanusb-lint, so a second run only checks what changed.
# Usage: lint.sh [--library | --tests | FILE…] (clang-tidy over only the library and its examples, also over
# tests, benchmarks and fuzz targets, or over only these files)
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1-}" in
  -h | --help)
    sed -n '2,6s/^# //p' "$0"
    exit 0
    ;;
esac

failed=0
if [ $# -eq 0 ] || [ "$1" = --tests ] || [ "$1" = --library ]; then
  scripts=()
  while IFS= read -r -d '' file; do
    if [[ $(head -n 1 "$file") =~ ^#!.*[/\ ](ba)?sh ]]; then
      scripts+=("$file")
    fi
  done < <(find scripts .ci examples tools tests virtual_camera bench -type f \
    \( -name '*.sh' -o ! -name '*.*' \) -print0 2>/dev/null || true)
  shellcheck "${scripts[@]}" || failed=1
  git ls-files -z --cached --others --exclude-standard '*.py' | xargs -0 pylint --jobs 0 || failed=1
fi
# Only the compile commands of the builds are needed, so they need not be built.
for preset in native native-fuzz windows-by-source; do
  cmake --preset "$preset" >/dev/null || exit 1
done
python3 -B scripts/lint_sources.py "$@" || failed=1
exit "$failed"

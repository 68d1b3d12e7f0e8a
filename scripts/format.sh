#!/usr/bin/env bash
# Formats the C and C++ files with clang-format 14 and .clang-format; with --check it changes nothing,
# shows what differs and fails. Usage: format.sh [--check]
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-}" in
  "") mode=(-i) ;;
  --check) mode=(--dry-run --Werror) ;;
  -h | --help)
    sed -n '2,3s/^# //p' "$0"
    exit 0
    ;;
  *)
    echo "format.sh: unknown argument \"$1\"; only --check is one" >&2
    exit 2
    ;;
esac

# Other versions format differently.
formatter=clang-format-14
if ! command -v "$formatter" >/dev/null; then
  echo "format.sh: $formatter is missing: run scripts/packages.sh" >&2
  exit 1
fi

folders=()
for folder in include src virtual_camera tools examples bindings tests fuzz bench; do
  [ ! -d "$folder" ] || folders+=("$folder")
done
find "${folders[@]}" -type f \( -name '*.h' -o -name '*.hpp' -o -name '*.c' -o -name '*.cpp' \) -print0 |
  xargs -0 -r "$formatter" --style=file "${mode[@]}"

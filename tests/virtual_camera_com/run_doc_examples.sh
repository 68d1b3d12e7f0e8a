#!/usr/bin/env bash
# Runs the examples of a document for users: every block marked "json" must be a configuration that
# virtual-camera.exe accepts, every block marked "sh" must end with exit code 0.
# Usage: run_doc_examples.sh DOCUMENT.md; started in the root of the source tree, with a camera's
# trace file from an earlier transfer in place.
set -euo pipefail
document=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# One file for each block, numbered, with the block's mark as its ending.
awk -v folder="$folder" '
  /^```(json|sh)$/ { count++; file = folder "/" count "." substr($0, 4); next }
  /^```/ { file = "" }
  file != "" { print > file }
' "$document"

shopt -s nullglob
examples=("$folder"/*.json "$folder"/*.sh)
[[ ${#examples[@]} -gt 0 ]] || {
  echo "$document: no examples found" >&2
  exit 1
}
for example in "${examples[@]}"; do
  echo "--- $(basename "$example")"
  cat "$example"
  echo "--- gives"
  if [[ $example == *.json ]]; then
    scripts/run_with_wine.sh "$BORVAN_BIN/virtual-camera.exe" --config "$example" check
  else
    bash -euo pipefail "$example"
  fi
done
echo "${#examples[@]} examples ran"

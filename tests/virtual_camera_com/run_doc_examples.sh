#!/usr/bin/env bash
# Runs the examples of a document for users: every block marked "json" must be a configuration that
# virtual-camera.exe accepts, every block marked "sh" must end with exit code 0.
# Usage: run_doc_examples.sh DOCUMENT.md HOST.exe, in the root of the source tree; HOST.exe makes the
# transfers that an example shows the trace of.
set -euo pipefail
document=$1
host=$2
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
traced_camera='\\?\usb#vid_1234&pid_0001&mi_00#6&1a2b3c4d&0&0000#{65e8773d-8f56-11d0-a3b9-00a0c9223196}\global'
scripts/with_cameras.sh "$host" --touch "$traced_camera"

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

#!/usr/bin/env bash
# Runs browser tests against the built borvanusb.exe under Wine, with the virtual cameras of the demo and the
# sample profiles.
# Usage: with_program.sh TEST.mjs…
# BORVAN_BIN names the folder of the products, if not build/windows/bin.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
export BORVAN_BIN=${BORVAN_BIN:-$root/build/windows/bin}
case "${1:-}" in
  -h | --help)
    sed -n '2,5s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
if [ "${WORKBENCH_INSIDE:-}" != yes ]; then
  [ $# -gt 0 ] || set -- "$here/walk.test.mjs"
  WORKBENCH_INSIDE=yes exec "$root/scripts/with_cameras.sh" "$0" "$@"
fi

folder=$(mktemp -d)
export BORVANUSB_PROFILES="Z:${root//\//\\}\\samples\\profiles"
"$root/scripts/run_with_wine.sh" "$BORVAN_BIN/borvanusb.exe" workbench --no-browser --stay \
  >"$folder/address" 2>"$folder/messages" &
server=$!
trap 'kill "$server" 2>/dev/null || true; rm -rf "$folder"' EXIT
for _ in $(seq 600); do
  grep -q http "$folder/address" && break
  kill -0 "$server" 2>/dev/null || { cat "$folder/messages" >&2; exit 1; }
  sleep 0.1
done
WORKBENCH_URL=$(tr -d '\r\n' <"$folder/address")
export WORKBENCH_URL
export WORKBENCH_CONTROL="$root/scripts/run_with_wine.sh $BORVAN_BIN/virtual-camera.exe"
export WORKBENCH_NAMES='{"camera": "Virtual camera, 1 MiB flash", "other": "Virtual camera, 4 MiB flash",
  "exposure": "SENSOR.EXPOSURE", "imageAddress": 262144}'
node --test --test-concurrency=1 "$@"

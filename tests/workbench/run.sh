#!/usr/bin/env bash
# Fetches what the browser tests need, and runs them; first builds the page that the simulated server shows.
# Usage: run.sh [--model | --program | --bench] [TEST.mjs…]
#   --model     only the unit tests of the page's model, without a browser
#   --program   against borvanusb.exe under Wine, on virtual cameras that are like the simulated ones.
#               BORVAN_BIN names the folder of the products, if not build/windows/bin; WINEPREFIX the
#               prefix, if not build/wine-workbench
#   --bench     measures bench/workbench_speed.mjs in the same surroundings
# Without names all tests run.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
page=$root/tools/borvanusb/workbench/page

program=
case "${1:-}" in
  -h | --help)
    sed -n '2,10s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
  --model)
    exec "$page/build.sh" --test
    ;;
  --program)
    program=yes
    shift
    ;;
  --bench)
    program=bench
    ;;
esac
if [ -z "$program" ]; then
  "$page/build.sh" # borvanusb.exe has the page in it
fi
"$root/scripts/fetch_npm.py" "$page/package-lock.json" "$root/build/workbench-page" playwright-core axe-core
if [ $# -eq 0 ]; then
  set -- "$here"/*.test.mjs
fi
# Only one browser at a time, because several would slow each other down.
run=(node --test --test-concurrency=1 "$@")
if [ "$program" = bench ]; then
  run=(node "$root/bench/workbench_speed.mjs")
fi
if [ -z "$program" ]; then
  exec "${run[@]}"
fi

export WORKBENCH_PROGRAM=${BORVAN_BIN:-$root/build/windows/bin}
export BORVAN_BIN=$WORKBENCH_PROGRAM
export WINEPREFIX=${WINEPREFIX:-$root/build/wine-workbench}
WORKBENCH_STATION=$(mktemp -d)
export WORKBENCH_STATION
trap 'rm -rf "$WORKBENCH_STATION"' EXIT
node "$here/station.mjs" "$WORKBENCH_STATION"

folder=Z:${WORKBENCH_STATION//\//\\}
export BORVANUSB_PROFILES=$folder
# Journals of interrupted programming, which tests remove, and the folders of the workbench's runs.
export WORKBENCH_JOURNALS=$WORKBENCH_STATION/journals
export BORVANUSB_JOURNALS=$folder\\journals
export BORVANUSB_WORKBENCH=$folder\\runs
"$root/scripts/with_cameras.sh" --config "$WORKBENCH_STATION/cameras.json" "${run[@]}"

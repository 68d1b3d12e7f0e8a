#!/usr/bin/env bash
# Builds the page, fetches what the browser tests need, and runs them.
# Usage: run.sh [--model | TEST.mjs…]
#   --model   only the unit tests of the page's model, without a browser
# Without names all tests run. world.mjs describes what the environment chooses.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
page=$root/tools/borvanusb/workbench/page

case "${1:-}" in
  -h | --help)
    sed -n '2,5s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
"$page/build.sh" --test
[ "${1:-}" != --model ] || exit 0
"$root/scripts/fetch_npm.py" "$page/package-lock.json" "$root/build/workbench-page" playwright-core axe-core
if [ $# -eq 0 ]; then
  set -- "$here"/*.test.mjs
fi
# Only one browser at a time, because several would slow each other down.
exec node --test --test-concurrency=1 "$@"

#!/usr/bin/env bash
# Builds the page, fetches what the browser tests need, and runs them.
# Usage: run.sh [TEST.mjs…]; without names all tests. world.mjs says what the environment chooses.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
page=$root/tools/borvanusb/workbench/page

"$page/build.sh" --test
"$root/scripts/fetch_npm.py" "$page/package-lock.json" "$root/build/workbench-page" playwright-core axe-core
if [ $# -eq 0 ]; then
  set -- "$here"/*.test.mjs
fi
# One browser at a time: two would take each other's time.
exec node --test --test-concurrency=1 "$@"

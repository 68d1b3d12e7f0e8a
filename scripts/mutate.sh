#!/usr/bin/env bash
# Do the tests bite? Changes one operator, constant or statement of src/ at a time, builds that and
# runs the native tests, which should fail. Prints each edit that they let pass; fails if one of them
# is not in scripts/equivalent_mutants.txt, the list of edits that change nothing anyone can see.
# The tree itself is never changed: all happens in build/mutation, where a run that was stopped goes
# on. Left out are the sources for Windows alone, and, unless asked for, headers: each edit of one
# builds every test that includes it.
# Usage: mutate.sh [--count N] [--seed S] [--room api|device|files|jobs|protocol]… [--jobs N]
#                  [--headers] [--fresh] [FILE…]
#   --count N   as many edits that compile (300; 0: all), taken in turns from the rooms
#   --seed S    which ones (1)
#   --room R    only this folder of src/; may be given several times
#   --jobs N    so many at a time (as many as there are processors)
#   --headers   headers too
#   --fresh     forgets what earlier runs found
#   FILE…       only these files, headers included
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = -h ] || [ "${1:-}" = --help ]; then
  sed -n '/^# Do the/,/^set/{/^#/s/^# \{0,1\}//p}' "$0"
  exit 0
fi

build=build/mutation/build
log=build/mutation/build.log
mkdir -p build/mutation
programs=(unit_tests device_tests protocol_tests files_tests jobs_tests api_tests list_document_test
  meaning_tests)
echo "== building the tests" >&2
# Unoptimised, without debug information and past any compiler cache: each edit is compiled once.
if ! { CCACHE_DISABLE=1 nice -n 19 cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -fPIC" &&
  CCACHE_DISABLE=1 nice -n 19 cmake --build "$build" -j2 --target "${programs[@]}"; } >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
CCACHE_DISABLE=1 exec nice -n 19 python3 -B scripts/mutate.py "$build" "${programs[@]}" -- "$@"

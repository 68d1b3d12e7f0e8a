#!/usr/bin/env bash
# Mutation tests: changes one operator, constant or statement of the library, the tool or the virtual
# camera at a time, builds it and runs the native tests, which should fail. Prints each mutant that
# survives; fails if one of them is not in scripts/equivalent_mutants.txt, the list of mutants without an
# observable effect. The tree itself is never changed: the work is done in build/mutation, and a stopped run
# can be continued. Sources for Windows only are skipped, and headers too unless --headers is given,
# because an edit of a header rebuilds every test that includes it.
# Usage: mutate.sh [--count N] [--seed S] [--room ROOM]… [--jobs N] [--headers] [--fresh] [--brief]
#                  [--preset PRESET] [FILE…]
#   --count N   number of edits that compile (300; 0: all), taken in turns from the rooms
#   --seed S    selects the edits (1)
#   --room R    only this folder, such as src/files or borvanusb/flash/engine; src/*, borvanusb/* and
#               virtual_camera/* are those of a product; may be given several times
#   --jobs N    number of edits to try in parallel (number of processors)
#   --headers   also edits headers
#   --fresh     ignores the results of earlier runs
#   --brief     one edit of some rooms each, with the programs that test them and without slow tests;
#               fails if more than a quarter survives
#   --preset P  uses the programs of this native build (native-quick)
#   FILE…       only these files, headers included
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = -h ] || [ "${1:-}" = --help ]; then
  sed -n '/^# Mutation tests/,/^set/{/^#/s/^# \{0,1\}//p}' "$0"
  exit 0
fi

preset=native-quick
options=()
while [ $# -gt 0 ]; do
  if [ "$1" = --preset ]; then
    preset=${2:?"mutate.sh: --preset: the name of a preset must follow"}
    shift
  else
    options+=("$1")
  fi
  shift
done

log=build/mutation/build.log
mkdir -p build/mutation
# The test programs that run the code of the products.
mapfile -t programs <scripts/native_programs.txt
echo "== building the tests: $preset" >&2
if ! { cmake --preset "$preset" &&
  nice -n 19 cmake --build --preset "$preset" --parallel "$(nproc)" --target "${programs[@]}"; } \
  >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
exec nice -n 19 python3 -B scripts/mutate.py "build/$preset" "${programs[@]}" -- \
  ${options[@]+"${options[@]}"}

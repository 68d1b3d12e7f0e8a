#!/usr/bin/env bash
# The long form of the reliability tests: ROUNDS (10,000) of start, use and end, and a fifth as many of
# lifetimes and races, each with dozens of calls. Builds the required targets of the preset (default:
# windows). CTest runs the short form.
#
#   endure.sh [ROUNDS [PRESET]]
#
# BORVAN_SEED, a number, selects other random rounds than the default. Takes half an hour.
set -euo pipefail
cd "$(dirname "$0")/.."

if [[ ${1-} == -h || ${1-} == --help ]]; then
  sed -n '2,8s/^# \{0,1\}//p' "$0"
  exit 0
fi
rounds=${1:-10000}
preset=${2:-windows}
if [[ ! $rounds =~ ^[1-9][0-9]*$ ]]; then
  echo "endure.sh: ROUNDS must be a number from 1 on: $rounds" >&2
  exit 2
fi

cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --target reliability_test
# A separate process for each: otherwise a job of one would keep the library loaded for the next, and memory
# that one keeps on purpose would be counted for the other.
run() {
  BORVAN_ROUNDS=$1 scripts/run_with_wine.sh "build/$preset/test-programs/reliability_test.exe" --gtest_filter="$2"
}
run "$rounds" 'Growth.*'
for filter in 'Lifetimes.OfHosts*' 'Lifetimes.OfALibrary*' 'Lifetimes.OfAnUnloaded*' 'Unplugging.*'; do
  run $(((rounds + 4) / 5)) "$filter"
done

#!/usr/bin/env bash
# Measures how much of the library, the tool and the virtual camera the native tests run: builds them with
# GCC's --coverage in build/coverage, runs them and prints lines and branches by room and file, and the
# lines that no test reached. Fails if one of those is in src/ and not in scripts/unreached_lines.txt, which
# gives the reasons, or if less than 95 % of the lines of src/ or 90 % of those of the tool or the camera are
# reached. Sources that only Windows builds compile can't be measured: they are listed with the tests under
# Wine that run them.
# Usage: coverage.sh [--all-branches] (also prints the lines with a branch that was never taken)
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-}" in
  -h | --help)
    sed -n '/^# Measures how much/,/^set/{/^#/s/^# \{0,1\}//p}' "$0"
    exit 0
    ;;
  "" | --all-branches) ;;
  *)
    echo "coverage.sh: unknown argument \"$1\"; only --all-branches is one" >&2
    exit 2
    ;;
esac

build=build/coverage
log=$build/build.log
# The test programs that run the code of the products.
mapfile -t programs <scripts/native_programs.txt
mkdir -p "$build"
echo "== building the tests" >&2
# No optimisation, so that lines are not merged. Atomic counters, because jobs run on other threads.
flags="-O0 --coverage -fprofile-update=atomic"
if ! { CCACHE_DISABLE=1 nice -n 19 cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=gcc \
  -DCMAKE_CXX_COMPILER=g++ "-DCMAKE_CXX_FLAGS_DEBUG=$flags" \
  "-DCMAKE_EXE_LINKER_FLAGS=--coverage" &&
  CCACHE_DISABLE=1 nice -n 19 cmake --build "$build" --parallel "$(nproc)" --target "${programs[@]}"; } >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi

find "$build" -name '*.gcda' -delete
echo "== running the tests" >&2
# Programs that share an object add to its counters in turn: the compiler's library locks the file.
# shellcheck disable=SC2016 # The inner shell expands its own arguments.
printf '%s\n' "${programs[@]}" | nice -n 19 xargs -P "$(nproc)" -I '{}' sh -c \
  '"$0/bin/{}" --gtest_brief=1 >"$0/{}.log" 2>&1 || { cat "$0/{}.log" >&2; exit 255; }' "$build"
exec nice -n 19 python3 -B scripts/coverage.py "$build" "$@"

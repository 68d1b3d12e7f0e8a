#!/usr/bin/env bash
# Everything that must hold, on a machine that may have nothing yet: packages, the two builds, then
# one CTest run over the tests of all of them (the Windows ones under Wine), format, lint and, last,
# the demo. Prints what each stage took; fails with a list of what failed. Usage: test.sh
set -euo pipefail
cd "$(dirname "$0")/.."

# GCC builds the one, Clang with its sanitizers the other: both compilers have their say.
presets=(windows native-sanitized)
everything=build/everything
logs=build/logs
BORVAN_WINE_CPU=$(($(nproc) - 1)) # see run_with_wine.sh
export BORVAN_WINE_CPU
export WINEDEBUG=${WINEDEBUG:--all}

names=()
seconds=()
failed=()

# stage NAME COMMAND…: runs the command with its output in a log, shows the log if it fails.
stage() {
  local name=$1 started=$SECONDS outcome=ok
  shift
  if ! "$@" >"$logs/$name.log" 2>&1; then
    outcome=FAILED
    failed+=("$name")
    tail -n 200 "$logs/$name.log"
  fi
  names+=("$name ($outcome)")
  seconds+=($((SECONDS - started)))
  printf '%-28s %-6s %4d s\n' "$name" "$outcome" $((SECONDS - started))
}

# Wine's servers outlive the programs they served, and hold this script's output open. A prefix in
# use has its drives from the start; its registry files come late.
stop_wine() {
  local prefix
  while IFS= read -r -d '' prefix; do
    prefix=$(dirname "$prefix")
    WINEPREFIX=$PWD/$prefix timeout 20 wineserver -k >/dev/null 2>&1 || true
    WINEPREFIX=$PWD/$prefix timeout 20 wineserver -w >/dev/null 2>&1 || true
  done < <(find build -maxdepth 4 -name dosdevices -print0 2>/dev/null)
}

mkdir -p "$logs"
trap stop_wine EXIT

stage packages scripts/packages.sh
if [ ${#failed[@]} -eq 0 ]; then
  for preset in "${presets[@]}"; do
    stage "build-$preset" scripts/build.sh "$preset"
  done
fi
if [ ${#failed[@]} -gt 0 ]; then
  # Old programs of a half-built tree would answer for the new sources.
  echo "Failed, so nothing was tested: ${failed[*]}"
  exit 1
fi

if ! python3 -B scripts/collect_tests.py "$everything" "${presets[@]}"; then
  echo "Failed, so nothing was tested: collecting the tests"
  exit 1
fi

echo
echo "Stages so far, the tests and checks follow:"
for index in "${!names[@]}"; do
  printf '  %-28s %4d s\n' "${names[index]}" "${seconds[index]}"
done
echo
# Without the labels' times CTest's verdict is what the output ends with.
# One more than there are cores: lint works in the background, and most Windows tests wait.
ctest --test-dir "$everything" --parallel "$(($(nproc) + 1))" --output-on-failure --no-label-summary

#!/usr/bin/env bash
# Runs all tests, also on a new machine: installs packages, makes the two builds, then one CTest run over
# all their tests (the Windows ones under Wine), format, lint and, last, the demo. Prints the duration of
# each stage, and a list of failures.
#
#   test.sh           everything
#   test.sh --quick   only the native tests in their short form, built with GCC and without
#                     sanitizers: for every change. No Wine, no lint
set -euo pipefail
cd "$(dirname "$0")/.."

quick=
case "${1:-}" in
  "") ;;
  --quick) quick=yes ;;
  -h | --help)
    sed -n '2,8s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
  *)
    echo "test.sh: unknown argument \"$1\"; only --quick is one" >&2
    exit 2
    ;;
esac

# One build uses GCC, the other Clang with sanitizers, so both compilers are tested.
presets=(windows native-sanitized)
builds=(windows-tests native-sanitized)
everything=build/everything
logs=build/logs
export WINEDEBUG=${WINEDEBUG:--all}

names=()
seconds=()
processor=()
failed=()

# The processor time (user and system) of this script's commands so far, in seconds.
processor_seconds() {
  awk -v second="$(getconf CLK_TCK)" '{ sub(/.*\) /, ""); printf "%d", ($14 + $15) / second }' "/proc/$$/stat"
}

# stage NAME COMMAND…: runs the command with its output in a log. Shows the log if the command fails.
stage() {
  local name=$1 started=$SECONDS used outcome=ok
  used=$(processor_seconds)
  shift
  if ! "$@" >"$logs/$name.log" 2>&1; then
    outcome=FAILED
    failed+=("$name")
    tail -n 200 "$logs/$name.log"
  fi
  names+=("$name ($outcome)")
  seconds+=($((SECONDS - started)))
  processor+=($(($(processor_seconds) - used)))
  printf '%-28s %-6s %4d s, %4d s of a processor\n' "$name" "$outcome" "${seconds[-1]}" \
    "${processor[-1]}"
}

# Wine's servers run longer than their programs and keep this script's output open. A prefix in use has its
# drives from the start; its registry files are written later.
stop_wine() {
  local prefix
  while IFS= read -r -d '' prefix; do
    prefix=$(dirname "$prefix")
    WINEPREFIX=$PWD/$prefix timeout 20 wineserver -k >/dev/null 2>&1 || true
    WINEPREFIX=$PWD/$prefix timeout 20 wineserver -w >/dev/null 2>&1 || true
  done < <(find build -maxdepth 4 -name dosdevices -print0 2>/dev/null)
}

test_quickly() {
  local preset=native-quick
  stage packages scripts/packages.sh
  # The build system reruns the configuration if something relevant has changed.
  [ -f "build/$preset/build.ninja" ] || stage configure cmake --preset "$preset"
  [ ${#failed[@]} -gt 0 ] || stage build cmake --build --preset "$preset" --parallel "$(nproc)"
  if [ ${#failed[@]} -gt 0 ]; then
    echo "Failed, so nothing was tested: ${failed[*]}"
    return 1
  fi
  # Many tests mostly wait, and none is disturbed by others.
  stage tests ctest --preset "$preset" --parallel "$((4 * $(nproc)))"
  scripts/longest_tests.sh "build/$preset"
  grep -E 'tests passed|tests failed' "$logs/tests.log" || true
  [ ${#failed[@]} -eq 0 ]
}

test_everything() {
  local build index outcome=0
  stage packages scripts/packages.sh
  if [ ${#failed[@]} -eq 0 ]; then
    for build in "${builds[@]}"; do
      stage "build-$build" scripts/build.sh "$build"
    done
  fi
  if [ ${#failed[@]} -gt 0 ]; then
    # Removes old programs, which would otherwise be tested in a half-built tree.
    echo "Failed, so nothing was tested: ${failed[*]}"
    return 1
  fi

  if ! python3 -B scripts/collect_tests.py "$everything" "${presets[@]}"; then
    echo "Failed, so nothing was tested: collecting the tests"
    return 1
  fi

  echo
  echo "Stages so far, the tests and checks follow:"
  for index in "${!names[@]}"; do
    printf '  %-28s %4d s\n' "${names[index]}" "${seconds[index]}"
  done
  echo
  # Slots, not tests: collect_tests.py gives a test that works two of them, and one that waits a single one. With
  # more, tests that wait for a page or a job sometimes gave up.
  ctest --test-dir "$everything" --parallel "$((2 * $(nproc) + 2))" --output-on-failure \
    --no-label-summary || outcome=$?
  scripts/longest_tests.sh "$everything"
  return "$outcome"
}

mkdir -p "$logs"
if [ -n "$quick" ]; then
  test_quickly
else
  trap stop_wine EXIT
  test_everything
fi

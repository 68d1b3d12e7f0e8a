#!/usr/bin/env bash
# Builds with a sanitizer and runs the tests:
#
#   sanitize.sh thread [TEST…]   native tests under ThreadSanitizer; any report fails its test
#   sanitize.sh trap [TEST…]     the library's tests under Wine; undefined behaviour ends the program
#
# TEST names some of the test programs instead of all. Takes some minutes each.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  sed -n '2,7s/^# \{0,1\}//p' "$0"
}

case ${1-} in
  -h | --help)
    usage
    exit 0
    ;;
  thread)
    preset=native-thread-sanitized
    everything=(all)
    ;;
  trap)
    preset=windows-trapping
    everything=(windows_com_test windows_library_test windows_lists_test reliability_test)
    ;;
  *)
    usage >&2
    exit 2
    ;;
esac
shift

# Stops at the first report of its kind, because the following ones are often its consequences.
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}
targets=("$@")
[[ ${#targets[@]} -gt 0 ]] || targets=("${everything[@]}")

cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --parallel "$(nproc)" --target "${targets[@]}"
selection=()
if [[ ${targets[*]} != all ]]; then
  selection=(--tests-regex "^($(
    IFS='|'
    echo "${targets[*]}"
  ))(_[0-9]+)?\$")
fi
ctest --preset "$preset" --parallel "$(nproc)" "${selection[@]}"

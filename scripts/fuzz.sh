#!/usr/bin/env bash
# Fuzzes the library, the virtual camera and the tool (preset native-fuzz): builds the targets, runs
# each for some seconds from its seeds in fuzz/corpus, stores new inputs in build/fuzz, and prints a
# table. With --replay it runs only the seeds, once. Fails if a target fails, and prints how to run the
# input again. Usage: fuzz.sh [--seconds N] [--replay] [TARGET…]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=60
replay=
targets=()
while [ $# -gt 0 ]; do
  case $1 in
    -h | --help)
      sed -n '2,5s/^# //p' "$0"
      exit 0
      ;;
    --seconds)
      seconds=${2:-}
      if ! [[ $seconds =~ ^[1-9][0-9]*$ ]]; then
        echo "fuzz.sh: --seconds \"$seconds\": must be a whole number above 0" >&2
        exit 2
      fi
      shift
      ;;
    --replay) replay=yes ;;
    *)
      if [ ! -f "fuzz/$1.cpp" ]; then
        echo "fuzz.sh: unknown target \"$1\"; targets are: $(cd fuzz && echo ./*.cpp | sed 's:\./::g; s:\.cpp::g')" >&2
        exit 2
      fi
      targets+=("$1")
      ;;
  esac
  shift
done
if [ ${#targets[@]} -eq 0 ]; then
  for source in fuzz/*.cpp; do
    targets+=("$(basename "$source" .cpp)")
  done
fi

work=build/fuzz
mkdir -p "$work"
log=$work/build.log
echo "== building: native-fuzz" >&2
if ! { cmake --preset native-fuzz &&
  cmake --build --preset native-fuzz -j2 --target "${targets[@]/#/fuzz_}"; } >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi

# Removes files that a target creates; a killed target leaves them behind.
TMPDIR=$(mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# Prints the last number after a word in a target's log.
figure() {
  grep -oE "$1 *[0-9]+" "$2" | tail -n 1 | grep -oE '[0-9]+$' || echo 0
}

# Runs a target and prints its line of the table. Fails if the target failed.
run() {
  local target=$1 program=build/native-fuzz/bin/fuzz_$1 log=$work/$1.log result=ok
  local found=$work/$1 limits=(-rss_limit_mb=2048 -timeout=10) kept
  mkdir -p "$found" "$work/crashes"
  kept=$(find "$found" -type f | wc -l)
  limits+=("-artifact_prefix=$work/crashes/$target-")
  if [ -n "$replay" ]; then
    "$program" "${limits[@]}" -runs=0 -print_final_stats=1 "fuzz/corpus/$target" >"$log" 2>&1 || result=FAILED
  else
    # Leaks are only detected at the end. A check after each input would take most of the time.
    "$program" "${limits[@]}" -max_total_time="$seconds" -detect_leaks=0 -print_final_stats=1 \
      "$found" "fuzz/corpus/$target" >"$log" 2>&1 || result=FAILED
  fi
  local first last
  first=$(grep -m 1 INITED "$log" | grep -oE 'cov: [0-9]+' | grep -oE '[0-9]+' || echo 0)
  last=$(figure 'cov:' "$log")
  printf '%-22s %11s %9s %7s %6s %6s  %s\n' "$target" "$(figure number_of_executed_units: "$log")" \
    "$(figure average_exec_per_sec: "$log")" "$last" "$((last - first))" \
    "$(($(find "$found" -type f | wc -l) - kept))" "$result"
  [ "$result" = ok ]
}

failed=()
printf '%-22s %11s %9s %7s %6s %6s  %s\n' target executions a-second edges new inputs result
for target in "${targets[@]}"; do
  run "$target" || failed+=("$target")
done

for target in ${failed[@]+"${failed[@]}"}; do
  echo
  echo "$target failed; the end of $work/$target.log:"
  grep -aE 'broken property|ERROR:|runtime error|SUMMARY|^found |^expected ' "$work/$target.log" | head -n 8 || true
  input=$(grep -aoE "Test unit written to .*" "$work/$target.log" | tail -n 1 | sed 's/.* to //' || true)
  if grep -qa 'LeakSanitizer' "$work/$target.log"; then
    echo "some input left memory behind; to find it: build/native-fuzz/bin/fuzz_$target $work/$target fuzz/corpus/$target"
  elif [ -n "$input" ]; then
    echo "run it again: build/native-fuzz/bin/fuzz_$target $input"
  fi
done
[ ${#failed[@]} -eq 0 ]

#!/usr/bin/env bash
# Runs the long tests, part by part, and prints a table of figures. A finished part is not run again
# without --fresh; an interrupted one is. Results and logs are in build/reliability.
# Usage: reliability.sh [--seconds N] [--count N] [--fresh] [PART…]
#   --seconds N  for each fuzz target (600)
#   --count N    power cuts, sequences, mutants (200); 50 times as many rounds of races, 100 times as many starts
#   --fresh      runs finished parts again
#   PART         fuzz, threads, traps, mutate, coverage, races, cuts, sequences or starts; all of them if none
#                is named
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=600
count=200
fresh=
all=(fuzz threads traps mutate coverage races cuts sequences starts)
parts=()

number() {
  if ! [[ $2 =~ ^[1-9][0-9]*$ ]]; then
    echo "reliability.sh: $1 \"$2\": must be a whole number above 0" >&2
    exit 2
  fi
}

while [ $# -gt 0 ]; do
  case $1 in
    -h | --help)
      sed -n '/^# Runs the long tests/,/^set/{/^#/s/^# \{0,1\}//p}' "$0"
      exit 0
      ;;
    --seconds)
      number "$1" "${2:-}"
      seconds=$2
      shift
      ;;
    --count)
      number "$1" "${2:-}"
      count=$2
      shift
      ;;
    --fresh) fresh=yes ;;
    *)
      if [[ " ${all[*]} " != *" $1 "* ]]; then
        echo "reliability.sh: unknown part \"$1\"; parts are: ${all[*]}" >&2
        exit 2
      fi
      parts+=("$1")
      ;;
  esac
  shift
done
[ ${#parts[@]} -gt 0 ] || parts=("${all[@]}")

results=build/reliability
mkdir -p "$results"
if [ -n "$fresh" ]; then
  rm -f "${parts[@]/#/$results/}"
fi

# Sets `command` to the command line of a part.
choose_command() {
  case $1 in
    fuzz) command=(scripts/fuzz.sh --seconds "$seconds") ;;
    threads) command=(scripts/sanitize.sh thread) ;;
    traps) command=(scripts/sanitize.sh trap) ;;
    mutate) command=(scripts/mutate.sh --count "$count") ;;
    coverage) command=(scripts/coverage.sh) ;;
    races) command=(scripts/endure.sh "$((50 * count))") ;;
    cuts) command=(tests/reliability/power_cuts.py --count "$count") ;;
    sequences) command=(tests/reliability/flash_sequences.py --count "$count") ;;
    starts) command=(tests/reliability/wine_starts.py --count "$((100 * count))") ;;
  esac
  # Debian's own Python; others may be installed, too.
  [[ ${command[0]} != *.py ]] || command=(/usr/bin/python3 -B "${command[@]}")
}

# These parts use programs of the Windows build, and don't build them.
for part in cuts sequences starts; do
  if [[ " ${parts[*]} " == *" $part "* && ! -f $results/$part ]]; then
    echo "== building: windows-tests" >&2
    scripts/build.sh windows-tests >"$results/build.log" 2>&1 || {
      cat "$results/build.log" >&2
      exit 1
    }
    break
  fi
done

failed=()
for part in "${parts[@]}"; do
  choose_command "$part"
  if [ -f "$results/$part" ]; then
    continue
  fi
  echo "== $part: ${command[*]}" >&2
  started=$SECONDS
  if "${command[@]}" 2>&1 | tee "$results/$part.log" >&2; then
    printf '%s\t%s\t%s\n' "$part" "$((SECONDS - started))" "${command[*]}" >"$results/$part.new"
    mv "$results/$part.new" "$results/$part"
  else
    failed+=("$part")
  fi
done

echo
printf '%-10s %8s  %s\n' part seconds command
for part in "${parts[@]}"; do
  [ ! -f "$results/$part" ] || awk -F '\t' '{ printf "%-10s %8s  %s\n", $1, $2, $3 }' "$results/$part"
done
for part in "${parts[@]}"; do
  [ -f "$results/$part" ] || continue
  echo
  echo "$part, the end of $results/$part.log:"
  tail -n 20 "$results/$part.log"
done
if [ ${#failed[@]} -gt 0 ]; then
  echo
  echo "failed: ${failed[*]}"
  exit 1
fi

#!/usr/bin/env bash
# Builds the measuring programs (presets native and windows), runs them all and prints a table: each
# figure beside its reference from the same run, and whether its target is met. Takes about three
# minutes, a GiB of disk and its own Wine prefix, all under build/bench/. Fails only if something could
# not be measured, not if a target is missed. Usage: bench.sh
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = -h ] || [ "${1:-}" = --help ]; then
  sed -n '2,5s/^# //p' "$0"
  exit 0
fi
if [ $# -gt 0 ]; then
  echo "bench.sh: takes no arguments but --help" >&2
  exit 2
fi

work=build/bench
files=$work/files
log=$work/build.log
mkdir -p "$files"
trap 'rm -rf "$files"' EXIT

build() {
  local preset=$1
  shift
  echo "== building: $preset" >&2
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset" -j2 --target "$@"; } \
    >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
  fi
}
build native bench_maps bench_transfers bench_native bench_virtual_camera
build windows BorvanUSB_x64 BorvanVirtualCamera borvanusb virtual-camera bench_camera bench_library bench_tool \
  bench_virtual_camera

export WINEPREFIX=$PWD/$work/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
wine=(/usr/lib/wine/wine64)
[ -x "${wine[0]}" ] || wine=(wine)
# See run_with_wine.sh.
if setarch -R true 2>/dev/null; then
  wine=(setarch -R "${wine[@]}")
fi
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  echo "== making a Wine prefix" >&2
  "${wine[@]}" wineboot -i >"$work/wine.log" 2>&1
fi

rounds=$work/rounds.txt
transfers=$work/transfers.json
: >"$rounds"

echo "== measuring: native transfers" >&2
# The series run in random order, so that a disturbance of the machine affects all of them equally.
build/native/bin/bench_transfers --benchmark_enable_random_interleaving=true \
  --benchmark_repetitions=25 --benchmark_min_time=0.01 --benchmark_out_format=json \
  --benchmark_out="$transfers" >"$work/transfers.log" 2>&1 || {
  cat "$work/transfers.log" >&2
  exit 1
}

for part in memory dumps lists waits; do
  echo "== measuring: native $part" >&2
  build/native/bin/bench_native "$files" "$part" >>"$rounds"
done

echo "== measuring: the virtual camera, native" >&2
build/native/bin/bench_virtual_camera "$files" native >>"$rounds"
echo "== measuring: the virtual camera, under Wine" >&2
"${wine[@]}" build/windows/bin/bench_virtual_camera.exe "Z:${PWD//\//\\}\\build\\bench\\files" dll |
  tr -d '\r' >>"$rounds"

for part in transfers memory-program memory-dump dump waits; do
  echo "== measuring: the DLL's $part" >&2
  # Wine's runtime writes Windows line ends.
  "${wine[@]}" build/windows/test-programs/bench_library.exe "Z:${PWD//\//\\}\\build\\bench\\files" "$part" |
    tr -d '\r' >>"$rounds"
done
for part in programming start; do
  echo "== measuring: the tool's $part" >&2
  "${wine[@]}" build/windows/test-programs/bench_tool.exe "Z:${PWD//\//\\}\\build\\bench\\files" "$part" |
    tr -d '\r' >>"$rounds"
done

echo "== measuring: register maps" >&2
# Exit code 1 means that a target was missed; the table shows it.
build/native/bin/bench_maps >"$work/maps.txt" || [ $? -eq 1 ]

echo "== counting: the transfers of the tool's commands" >&2
python3 -B bench/command_transfers.py >"$work/commands.txt" || echo "   a command fails or misses its target" >&2
echo "== counting: borvanusb beside flashrom" >&2
python3 -B bench/beside_flashrom.py >"$work/flashrom.txt"
echo "== measuring: the workbench" >&2
WINEPREFIX=$PWD/build/wine-workbench BORVAN_BIN=$PWD/build/windows/bin tests/workbench/run.sh --bench \
  >"$work/workbench.log" 2>&1 || echo "   the workbench fails or misses a target" >&2
sed -n '/^i\./,$p' "$work/workbench.log" | grep -E '^(i\.|   )' >"$work/workbench.txt" || cat "$work/workbench.log" >&2

echo
python3 bench/report.py "$rounds" "$transfers"
cat "$work/maps.txt"
cat "$work/workbench.txt"
echo
cat "$work/commands.txt"
echo
cat "$work/flashrom.txt"

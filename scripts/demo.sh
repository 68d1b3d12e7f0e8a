#!/usr/bin/env bash
# Shows the whole way on a machine with Debian 12 and nothing else, no camera and no Windows either:
# builds everything, plugs in two virtual cameras, fills one's flash with other bytes, programs a
# real firmware image into it through the library, reads it back and compares; then loads a list of
# settings into its sensor and looks whether they arrived.
# Usage: demo.sh [--large]; --large takes an image of 3.5 MiB in place of one of 256 KiB.
# Exits with 0 only if image and dump are identical and the sensor holds what the list says.
set -euo pipefail
cd "$(dirname "$0")/.."

BORVAN_WINE_CPU=$(($(nproc) - 1)) # see run_with_wine.sh
export BORVAN_WINE_CPU

package=seabios
image=/usr/share/seabios/bios-256k.bin
camera=0
address=0x40000
case "${1-}" in
  '') ;;
  --large)
    package=ovmf
    image=/usr/share/OVMF/OVMF_CODE_4M.fd
    camera=1
    ;;
  -h | --help)
    sed -n '2,7s/^# //p' "$0"
    exit 0
    ;;
  *)
    echo "demo.sh: \"$1\" is no option; only --large is" >&2
    exit 1
    ;;
esac

folder=build/demo
list=samples/sensor-16-8.txt
dump=$folder/read-back.bin
text_dump=$folder/read-back.txt
trace=$folder/trace.jsonl

bold='' plain=''
if [ -t 1 ]; then
  bold=$'\e[1m' plain=$'\e[0m'
fi

heading() { printf '\n%s%s%s\n' "$bold" "$*" "$plain"; }

fail() {
  heading "DEMO FAILED: $*"
  exit 1
}

# Without root nothing is installed; the line to run is shown instead.
install_image() {
  if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ]; then
    return
  fi
  if [ "$(id -u)" -ne 0 ]; then
    echo "The image is in the package $package. Run this line, then start again:"
    echo "sudo apt-get update && sudo apt-get install -y --no-install-recommends $package"
    exit 1
  fi
  {
    apt-get update -q
    DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "$package"
  } >"$folder/install.log" 2>&1 || fail "can't install $package, see $folder/install.log"
}

with_cameras() { scripts/with_cameras.sh --config "$folder/cameras.json" "$@"; }

mkdir -p "$folder"
rm -f "$dump" "$text_dump" "$trace"

heading "1. Build the library, the virtual cameras and the examples"
SECONDS=0
if ! scripts/build.sh windows >"$folder/build.log" 2>&1; then
  tail -n 20 "$folder/build.log"
  fail "the build failed, see $folder/build.log"
fi
install_image
echo "done in $SECONDS s; the image is $image, $(stat -c %s "$image") bytes"

# The demo's own copy of the two cameras writes down every transfer.
jq '.cameras[].trace = "trace.jsonl"' virtual_camera/configurations/demo.json \
  >"$folder/cameras.json"

heading "2. Ask camera $camera's chip for its feature register 0x1a3"
with_cameras read_register.exe 0x1a3 --camera "$camera" || fail "the register can't be read"

heading "3. Fill the flash region with other bytes, so that a missing erase would show"
head -c "$(stat -c %s "$image")" /dev/urandom >"$folder/other-bytes.bin"
with_cameras program_flash.exe --image "$folder/other-bytes.bin" --address "$address" \
  --camera "$camera" --dump "$dump" || fail "the other bytes can't be programmed"

heading "4. Program the image over them"
rm -f "$trace" "$dump"
with_cameras program_flash.exe --image "$image" --address "$address" --camera "$camera" \
  --dump "$dump" || fail "the image can't be programmed"

heading "5. What the camera was asked for meanwhile"
# Each transfer in words comes first, hundreds of thousands of lines with --large; the table last,
# behind an empty line.
with_cameras virtual-camera.exe trace "$trace" >"$folder/trace.txt" ||
  fail "the trace can't be read"
tail -n 100 "$folder/trace.txt" | tr -d '\r' |
  awk 'NF == 0 { table = ""; next } { table = table $0 "\n" } END { printf "%s", table }' |
  tail -n 16

heading "6. Read it once more, as text"
with_cameras program_flash.exe --image "$image" --address "$address" --camera "$camera" \
  --dump "$text_dump" --compare-only >"$folder/compare.log" 2>&1 || {
  cat "$folder/compare.log"
  fail "the text dump can't be made"
}
head -n 2 "$text_dump"
echo "…"
tail -n 2 "$text_dump"

cmp "$image" "$dump" || fail "image and dump differ"

heading "7. Load the sensor's settings from the list $list"
# Without power the sensor forgets what a former run left in it.
with_cameras virtual-camera.exe power-cycle "$camera" || fail "the power can't be taken away"
with_cameras load_settings.exe "$list" --camera "$camera" || fail "the list can't be loaded"

heading "DEMO OK: the flash holds the image, $(stat -c %s "$dump") bytes compared with cmp, all equal;" \
  "the sensor holds the list"

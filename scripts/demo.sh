#!/usr/bin/env bash
# Shows the whole way on a machine with Debian 12 and nothing else, no camera and no Windows either:
# builds everything, plugs in two virtual cameras, fills one's flash with other bytes, programs a
# real firmware image over them with borvanusb, reads it back and compares; then loads lists of
# settings into its sensor and its chip and looks whether they arrived.
# Usage: demo.sh [--large]; --large takes an image of 3.5 MiB in place of one of 256 KiB.
# Exits with 0 only if image and flash are identical and sensor and chip hold what the lists say.
set -euo pipefail
cd "$(dirname "$0")/.."

package=seabios
image=/usr/share/seabios/bios-256k.bin
camera=0
flash_size=1M
address=0x40000
case "${1-}" in
  '') ;;
  --large)
    package=ovmf
    image=/usr/share/OVMF/OVMF_CODE_4M.fd
    camera=1
    flash_size=4M
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
sensor_list=samples/sensor-16-8.txt
sensor=0x6c
chip_list=samples/registers-with-delays.txt
firmware=$folder/firmware.bin
backup=$folder/old-bytes.bin
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

# The tool, with the command line shown above what it says.
borvanusb() {
  echo "\$ borvanusb $*"
  with_cameras borvanusb.exe "$@"
}

mkdir -p "$folder"
rm -f "$folder"/*.bin "$folder"/*.journal "$text_dump" "$trace"

heading "1. Build the library, the tool and the virtual cameras"
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

heading "2. Look at the cameras"
borvanusb list || fail "the cameras are not listed"
borvanusb info --camera "$camera" || fail "the camera does not answer"

heading "3. Fill the flash region with other bytes, so that a missing erase would show"
cp "$image" "$firmware" # the tool keeps what it needs beside the image
size=$(stat -c %s "$firmware")
head -c "$size" /dev/urandom >"$folder/other.bin"
# What the blank flash can't tell, its size, is said.
program=(flash program --address "$address" --camera "$camera" --flash-size "$flash_size")
borvanusb "${program[@]}" "$folder/other.bin" --no-backup ||
  fail "the other bytes can't be programmed"

heading "4. Program the image over them"
rm -f "$trace"
borvanusb "${program[@]}" "$firmware" --backup "$backup" ||
  fail "the image can't be programmed"
cmp "$folder/other.bin" "$backup" || fail "the backup does not hold the old bytes"

heading "5. What the camera was asked for meanwhile"
# Each transfer in words comes first, hundreds of thousands of lines with --large; the table last,
# behind an empty line.
with_cameras virtual-camera.exe trace "$trace" >"$folder/trace.txt" ||
  fail "the trace can't be read"
tail -n 100 "$folder/trace.txt" | tr -d '\r' |
  awk 'NF == 0 { table = ""; next } { table = table $0 "\n" } END { printf "%s", table }' |
  tail -n 16

heading "6. Read it once more, as bytes and as text"
borvanusb flash read "$address+$size" "$dump" --camera "$camera" || fail "the flash can't be read"
borvanusb flash read "$((address + size - 32))+32" "$text_dump" --camera "$camera" --quiet ||
  fail "the text dump can't be made"
cat "$text_dump"

cmp "$image" "$dump" || fail "image and flash differ"

heading "7. Load settings into the sensor from the list $sensor_list"
# Without power the camera forgets what a former run left in it.
with_cameras virtual-camera.exe power-cycle "$camera" || fail "the power can't be taken away"
borvanusb i2c load "$sensor_list" --verify --camera "$camera" || fail "the list can't be loaded"
# The list's registers as the tool shows them, without the two lines that choose the sensor; and a
# script that reads each of them.
sed -nE 's/^(0x[0-9a-f]{4}),(0x[0-9a-f]{2}),.*/\1  \2/p' "$sensor_list" | grep -v '^0xfff' \
  >"$folder/wanted.txt"
awk -v sensor="$sensor" '{ print "i2c read", $1, "--slave", sensor }' "$folder/wanted.txt" \
  >"$folder/read-sensor.txt"
borvanusb run "$folder/read-sensor.txt" --camera "$camera" >"$folder/read-sensor.log" ||
  fail "the sensor can't be read, see $folder/read-sensor.log"
tr -d '\r' <"$folder/read-sensor.log" | grep '^0x' | diff "$folder/wanted.txt" - ||
  fail "the sensor does not hold the list"
echo "read back: $(wc -l <"$folder/wanted.txt") registers, all as in the list"

heading "8. Load registers of the chip from the list $chip_list"
borvanusb reg load "$chip_list" --verify --markers delays --camera "$camera" ||
  fail "the list can't be loaded"
borvanusb reg diff "$chip_list" camera --camera "$camera" || fail "the chip does not hold the list"

heading "DEMO OK: the flash holds the image, $size bytes compared with cmp, all equal;" \
  "sensor and chip hold the lists"

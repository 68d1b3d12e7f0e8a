#!/usr/bin/env bash
# Demonstrates the main task on a machine with Debian 12, without a camera and without Windows: builds
# everything, plugs in two virtual cameras, fills the flash of one with other bytes, programs a real
# firmware image over them with borvanusb, reads it back and compares. Then it loads lists of settings
# into sensor and chip and verifies them. Finally it does the same by name, with the profiles of
# samples/profiles.
# Usage: demo.sh [--large | --workbench]
#   --large      programs an image of 3.5 MiB instead of one of 256 KiB
#   --workbench  starts the workbench, a page in the browser, with the two cameras until Ctrl-C
# Exits with 0 only if image and flash are identical and sensor and chip have the values of the lists.
set -euo pipefail
cd "$(dirname "$0")/.."

package=seabios
image=/usr/share/seabios/bios-256k.bin
camera=0
flash_size=1M
address=0x40000
workbench=
case "${1-}" in
  '') ;;
  --workbench) workbench=yes ;;
  --large)
    package=ovmf
    image=/usr/share/OVMF/OVMF_CODE_4M.fd
    camera=1
    flash_size=4M
    ;;
  -h | --help)
    sed -n '2,11s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
  *)
    echo "demo.sh: \"$1\" is no option; only --large and --workbench are" >&2
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

is_installed() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Without root, nothing is installed; the command to run is shown instead.
install_image() {
  if is_installed "$package"; then
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

# Shows what the demo will do, before it starts anything that takes long.
announce() {
  local missing build
  missing=$(scripts/packages.sh --missing)
  [ -n "$workbench" ] || is_installed "$package" || [[ " $missing " == *" $package "* ]] || missing="$missing $package"
  build="only what changed since the last build"
  [ -f build/windows/bin/borvanusb.exe ] || build="everything, some minutes at the first run"
  echo "This demo"
  echo "  installs  ${missing:-no packages: all are there}"
  echo "  builds    the library, the tool and the virtual cameras into build/windows: $build"
  echo "  writes    build/demo, build/windows, build/wine-prefix; no real camera is touched"
  if [ -n "$workbench" ]; then
    echo "  starts    the workbench on 127.0.0.1 and prints its address, for a browser on this machine"
    return
  fi
  echo "  shows     a firmware image programmed into a virtual camera and read back, and lists of"
  echo "            settings loaded into sensor and chip; less than a minute after the build"
}

# Shows the progress of the build: on a terminal, ninja's status in one line; elsewhere, a line for each stage
# and for each quarter of the build. All output goes to the log.
show_build() {
  local line width last=-1 done_steps total quarter
  width=$(($(tput cols 2>/dev/null || echo 80) - 12))
  while IFS= read -r line; do
    printf '%s\n' "$line" >>"$folder/build.log"
    if [ -t 1 ]; then
      printf '\r\e[K%4d s  %s' "$SECONDS" "${line:0:width}"
      continue
    fi
    case $line in
      '== '* | 'Installing: '*)
        printf '%4d s  %s\n' "$SECONDS" "$line"
        ;;
      '['*/*']'*)
        done_steps=${line#\[} done_steps=${done_steps%%/*}
        total=${line#*/} total=${total%%\]*}
        [[ $done_steps =~ ^[0-9]+$ && $total =~ ^[1-9][0-9]*$ ]] || continue
        quarter=$((done_steps * 4 / total))
        if [ "$quarter" -gt "$last" ]; then
          last=$quarter
          printf '%4d s  built %d of %d\n' "$SECONDS" "$done_steps" "$total"
        fi
        ;;
    esac
  done
  if [ -t 1 ]; then
    printf '\r\e[K'
  fi
}

with_cameras() { scripts/with_cameras.sh --config "$folder/cameras.json" "$@"; }

# Runs the tool and shows the command line above its output.
borvanusb() {
  echo "\$ borvanusb $*"
  with_cameras borvanusb.exe "$@"
}

mkdir -p "$folder"
rm -f "$folder"/*.bin "$folder"/*.journal "$text_dump" "$trace"

announce

heading "1. Build the library, the tool and the virtual cameras"
SECONDS=0
: >"$folder/build.log"
# With pipefail, the exit code of the build is used.
if ! scripts/build.sh windows 2>&1 | show_build; then
  tail -n 20 "$folder/build.log"
  fail "the build failed, see $folder/build.log"
fi
if [ -n "$workbench" ]; then
  heading "2. The workbench on two virtual cameras with the profiles of samples/profiles"
  cp virtual_camera/configurations/demo.json "$folder/cameras.json"
  # A copy, because the page can save presets to the profiles.
  rm -rf "$folder/samples"
  cp -r samples "$folder"
  # Converts a folder name for Windows programs.
  profiles=$PWD/$folder/samples/profiles
  export BORVANUSB_PROFILES="Z:${profiles//\//\\}"
  echo "Open the address in a browser on this machine. It works once; Ctrl-C ends the workbench."
  with_cameras borvanusb.exe workbench --no-browser --stay
  exit 0
fi
install_image
echo "done in $SECONDS s; the image is $image, $(stat -c %s "$image") bytes"

# The demo uses its own copy of the two cameras, and records every transfer.
jq '.cameras[].trace = "trace.jsonl"' virtual_camera/configurations/demo.json \
  >"$folder/cameras.json"

heading "2. Look at the cameras"
borvanusb list || fail "the cameras are not listed"
borvanusb info --camera "$camera" || fail "the camera does not answer"

heading "3. Fill the flash region with other bytes, so that a missing erase would show"
cp "$image" "$firmware" # the tool stores its files beside the image
size=$(stat -c %s "$firmware")
head -c "$size" /dev/urandom >"$folder/other.bin"
# The size of a blank flash can't be detected, so it is given.
program=(flash program --address "$address" --camera "$camera" --flash-size "$flash_size")
borvanusb "${program[@]}" "$folder/other.bin" --no-backup ||
  fail "the other bytes can't be programmed"

heading "4. Program the image over them"
rm -f "$trace"
borvanusb "${program[@]}" "$firmware" --backup "$backup" ||
  fail "the image can't be programmed"
cmp "$folder/other.bin" "$backup" || fail "the backup does not hold the old bytes"

heading "5. The transfers that the camera received meanwhile"
# The list of transfers comes first, hundreds of thousands of lines with --large. The table follows after an
# empty line.
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
# A camera without power forgets the state of an earlier run.
with_cameras virtual-camera.exe power-cycle "$camera" || fail "the power cycle failed"
borvanusb i2c load "$sensor_list" --verify --camera "$camera" || fail "the list can't be loaded"
# The list's registers as the tool prints them, without the two lines that select the sensor; and a script
# that reads each of them.
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

heading "9. The same by name: each camera finds its profile in samples/profiles"
# Converts a folder name for Windows programs.
export BORVANUSB_PROFILES="Z:${PWD//\//\\}\\samples\\profiles"
borvanusb profile list || fail "the profiles can't be listed"
borvanusb preset apply night --verify --camera 0 || fail "the preset can't be applied"
borvanusb preset apply bars --verify --camera 1 || fail "the preset of the other camera can't be applied"
before=$folder/before.txt
borvanusb reg dump --all-named "$before" --camera 0 || fail "the registers can't be dumped"
borvanusb reg write SENSOR.CTRL.GAIN=3 --verify --camera 0 || fail "the field can't be written"
echo "All differences since the dump; the exit code for differences is 7:"
difference=0
borvanusb reg diff "$before" camera --camera 0 >"$folder/difference.txt" || difference=$?
cat "$folder/difference.txt"
[ "$difference" -eq 7 ] || fail "the exit code is $difference in place of 7"
[ "$(tr -d '\r' <"$folder/difference.txt" | grep -c '^SENSOR')" -eq 1 ] ||
  fail "more has changed than the one register"

heading "10. Firmware as Intel HEX into its region, on both cameras at once"
hex=$folder/firmware.hex
report=$folder/report.json
objcopy -I binary -O ihex --change-addresses 0x40000 "$folder/other.bin" "$hex"
borvanusb flash program "$hex" --region firmware --all --report "$report" --tag order=4711 --no-backup ||
  fail "the HEX file can't be programmed into the region"
borvanusb flash verify "$hex" --region firmware --all || fail "flash and HEX file differ"
borvanusb flash map --camera 0 || fail "the flash can't be shown"
for index in 0 1; do
  jq -e '.tags.order == "4711" and .verified == true' "$folder/report-$index.json" >/dev/null ||
    fail "the report of camera $index does not tell the order or the verification"
done
echo "reports: $folder/report-0.json, $folder/report-1.json"

heading "DEMO OK: the flash holds the image, $size bytes compared with cmp, all equal;" \
  "sensor and chip hold the lists; presets, a field and a HEX file in its region by name"
echo
echo "Next, try:"
echo "  scripts/with_cameras.sh borvanusb.exe info --camera 0              # look at a camera"
echo "  scripts/with_cameras.sh borvanusb.exe flash program --help         # the options of a command"
echo "  scripts/with_cameras.sh borvanusb.exe watch --reg 0x1a3 --camera 0 --count 5   # poll a register"
echo "  BORVANUSB_PROFILES=samples/profiles scripts/with_cameras.sh borvanusb.exe reg show SENSOR.CTRL --camera 0"
echo "  scripts/demo.sh --workbench                                        # the same in a browser"
echo "docs/tool.md is the guide to the tool."

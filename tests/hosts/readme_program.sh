#!/usr/bin/env bash
# Builds the C program of README.md by the line that README.md shows, in a folder that holds include/,
# the import library and nothing else, and runs it on a virtual camera: with any answer but y it writes
# nothing, with y the flash holds the image.
# Usage: readme_program.sh BIN LIB PRODUCTS, the build's folders, in the root of the source tree.
set -euo pipefail
bin=$(realpath "$1")
lib=$(realpath "$2")
products=$(realpath "$3")
root=$PWD
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
  echo "readme_program.sh: $1" >&2
  exit 1
}

mkdir -p "$folder/build/windows/lib" "$folder/include"
cp include/*.h include/*.cpp "$folder/include"
cp "$lib/libBorvanUSB_x64.dll.a" "$folder/build/windows/lib"
# shellcheck disable=SC2016
sed -n '/^```c$/,/^```$/p' README.md | sed '1d;$d' >"$folder/program.c"
line=$(sed -n 's/^\$ \(.* program\.c .*\)$/\1/p' README.md)
[[ $(wc -l <<<"$line") -eq 1 && -n $line ]] || fail "README.md: one line that builds program.c was expected"
cd "$folder"
bash -euxo pipefail -c "$line -Wall -Wextra -Wpedantic -Wconversion -Werror"
cp "$bin/BorvanUSB_x64.dll" .

head -c 5000 /dev/urandom >firmware.bin
wine="$root/scripts/run_with_wine.sh"
holds_the_image() {
  "$wine" "$products/borvanusb.exe" flash verify firmware.bin --address 0x40000 --camera 0 --flash-size 1M --quiet
}
run() { "$wine" ./program.exe <<<"$1" | tr -d '\r' >output.txt; }

if run n; then fail "a program that wrote nothing ended with 0"; fi
grep -q 'feature register: 0x20' output.txt || fail "the feature register was not shown"
grep -q 'nothing was written' output.txt || fail "it did not say that nothing was written"
if holds_the_image; then fail "the flash was programmed without a yes"; fi
run y || fail "the program failed: $(cat output.txt)"
grep -q 'no failure (0x00000000)' output.txt || fail "the result was not shown"
holds_the_image || fail "the flash does not hold the image"

rm firmware.bin
if run y; then fail "a program without its image ended with 0"; fi
grep -q 'File name error or file error (0xe000000a)' output.txt || fail "the failure was not shown"

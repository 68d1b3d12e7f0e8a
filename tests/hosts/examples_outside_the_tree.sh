#!/usr/bin/env bash
# Runs every build command of examples/README.md in a folder that holds the examples, include/, the
# import library and the DLL and nothing else; then programs a virtual camera with what came of it.
# Usage: examples_outside_the_tree.sh BIN LIB, the build's folders, in the root of the source tree.
set -euo pipefail
bin=$(realpath "$1")
lib=$(realpath "$2")
root=$PWD
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

mkdir -p "$folder/build/windows/lib" "$folder/include"
cp -R examples "$folder"
cp include/*.h include/*.cpp "$folder/include"
cp "$lib/libBorvanUSB_x64.dll.a" "$folder/build/windows/lib"
cd "$folder"

commands=$(sed -n 's/^\$ //p' examples/README.md)
[[ $(wc -l <<<"$commands") -eq 10 ]] || {
  echo "examples/README.md: 10 commands were expected" >&2
  exit 1
}
bash -euxo pipefail -c "$commands"

head -c 5000 /dev/urandom >image.bin
for programs in build build/program_flash; do
  cp "$bin/BorvanUSB_x64.dll" "$programs"
  for program in program_flash program_flash_cpp; do
    rm -f image.bin.readback
    "$root/scripts/run_with_wine.sh" "$programs/$program.exe" image.bin 0x40000 0
    cmp image.bin image.bin.readback
  done
done
for folder_of in build build/read_register; do
  cp "$bin/BorvanUSB_x64.dll" "$folder_of"
  "$root/scripts/run_with_wine.sh" "$folder_of/read_register.exe" 0x1a3 0
done
for folder_of in build build/load_settings; do
  cp "$bin/BorvanUSB_x64.dll" "$folder_of"
  "$root/scripts/run_with_wine.sh" "$folder_of/load_settings.exe" "$root/samples/sensor-16-8.txt" 0
done

#!/usr/bin/env bash
# Runs every build command of examples/README.md in a folder that holds an installation and nothing
# else; then programs a virtual camera with what came of it.
# Usage: examples_outside_the_tree.sh BUILD, the build's folder, in the root of the source tree.
set -euo pipefail
build=$(realpath "$1")
root=$PWD
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

cmake --install "$build" --prefix "$folder" >/dev/null
cd "$folder"

commands=$(sed -n 's/^\$ //p' share/examples/README.md)
[[ $(wc -l <<<"$commands") -eq 10 ]] || {
  echo "examples/README.md: 10 commands were expected" >&2
  exit 1
}
bash -euxo pipefail -c "$commands"

head -c 5000 /dev/urandom >image.bin
cp bin/BorvanUSB_x64.dll build # CMake's programs have their own
for programs in build build/program_flash; do
  for program in program_flash program_flash_cpp; do
    rm -f image.bin.readback
    "$root/scripts/run_with_wine.sh" "$programs/$program.exe" image.bin 0x40000 0
    cmp image.bin image.bin.readback
  done
done
for folder_of in build build/read_register; do
  "$root/scripts/run_with_wine.sh" "$folder_of/read_register.exe" 0x1a3 0
done
for folder_of in build build/load_settings; do
  "$root/scripts/run_with_wine.sh" "$folder_of/load_settings.exe" share/samples/sensor-16-8.txt 0
done

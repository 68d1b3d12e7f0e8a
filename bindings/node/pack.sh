#!/usr/bin/env bash
# Makes the npm package borvanusb-VERSION.tgz with the DLLs and borvanusb.exe inside. Equal sources and
# products give equal bytes.
# Usage: pack.sh PRODUCTS FOLDER: the folder of the Windows build's products, and where the package goes.
set -euo pipefail
umask 022 # modes are a part of the package
source_folder=$(cd "$(dirname "$0")" && pwd)
if [[ $# -ne 2 ]]; then
  echo "usage: pack.sh PRODUCTS FOLDER" >&2
  exit 1
fi
products=$1
mkdir -p "$2"
target=$(cd "$2" && pwd)
header=$source_folder/../../include/borvan_usb_version.h
version=$(sed -n 's/^#define BORVAN_USB_VERSION_TEXT "\(.*\)"$/\1/p' "$header")
if [[ -z $version ]]; then
  echo "pack.sh: $header names no version" >&2
  exit 1
fi

staging=$(mktemp -d)
trap 'rm -rf "$staging"' EXIT
cp -r "$source_folder"/{index.js,index.d.ts,lib} "$staging"
# The guide, without its links to other files of the source tree.
sed -E 's/\[([^]]*)\]\(\.\.[^)]*\)/\1/g' "$source_folder/../../docs/bindings/node.md" >"$staging/README.md"
sed "s/^  \"version\": \"0.0.0\",$/  \"version\": \"$version\",/" "$source_folder/package.json" >"$staging/package.json"
mkdir "$staging/native"
for product in BorvanUSB_x64.dll borvanusb_select.dll borvanusb.exe; do
  if [[ ! -f $products/$product ]]; then
    echo "pack.sh: $products/$product is missing: build the Windows preset first (scripts/build.sh windows)" >&2
    exit 1
  fi
  cp "$products/$product" "$staging/native"
done
cd "$staging"
npm pack --ignore-scripts --silent --pack-destination "$target"

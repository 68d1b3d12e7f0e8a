#!/usr/bin/env bash
# Builds the page of `borvanusb workbench`: checks the types, bundles the sources and writes index.html,
# page.js and page.css.
#
# Usage: build.sh [--test] [OUTPUT]
#   OUTPUT   the folder for the three files, by default build/workbench-page/page
#   --test   runs the unit tests of the model as well
#
# The packages of npm come from scripts/fetch_npm.py: their versions and checksums are in package-lock.json,
# the downloads stay in build/downloads/npm. A second run needs no network.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../../../.." && pwd)
room=$root/build/workbench-page
modules=$room/node_modules
largest_kib=250

run_tests=
if [ "${1:-}" = --test ]; then
  run_tests=yes
  shift
fi
case "${1:-}" in
  -h | --help)
    sed -n '2,10s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
output=${1:-$room/page}
mkdir -p "$room" "$output"
output=$(cd "$output" && pwd)

# A lock, because two builds at the same time would unpack into the same folder.
exec 9>"$room/lock"
flock 9
"$root/scripts/fetch_npm.py" "$here/package-lock.json" "$room" \
  preact uplot typescript @types/node undici-types @esbuild/linux-x64
esbuild=$modules/@esbuild/linux-x64/bin/esbuild
chmod +x "$esbuild"

# tsconfig.json must find the packages in the build folder.
cat >"$room/tsconfig.json" <<END
{
  "extends": "$here/tsconfig.json",
  "compilerOptions": {
    "baseUrl": "$room",
    "paths": {"*": ["./node_modules/*", "./node_modules/@types/*"]},
    "typeRoots": ["$modules/@types"]
  },
  "include": ["$here/src/**/*", "$here/tests/**/*"]
}
END
node "$modules/typescript/bin/tsc" --noEmit --incremental --tsBuildInfoFile "$room/checked.tsbuildinfo" \
  -p "$room/tsconfig.json"

export NODE_PATH=$modules
bundle() {
  "$esbuild" "$@" --bundle --log-level=warning --jsx=automatic --jsx-import-source=preact
}
if [ -n "$run_tests" ]; then
  rm -rf "$room/tests"
  bundle "$here"/tests/*.test.ts --platform=node --format=esm --out-extension:.js=.mjs --outdir="$room/tests"
  node --test "$room/tests/"
fi
bundle "$here/src/main.tsx" --minify --target=es2021 --legal-comments=none --outfile="$output/page.js"
bundle "$here/src/style.css" --minify --outfile="$output/page.css"
cp "$here/src/index.html" "$output/index.html"

size=$(cat "$output/index.html" "$output/page.js" "$output/page.css" | gzip -9 | wc -c)
if [ "$size" -gt $((largest_kib * 1024)) ]; then
  echo "build.sh: the page has $size bytes compressed, more than $largest_kib KiB" >&2
  exit 1
fi
echo "page: $size bytes compressed"

#!/usr/bin/env bash
# Builds the documentation as an HTML site that opens from a folder: the pages of docs/, the reference of the
# public headers, and a search over both. Fails if a name in the headers is not documented or a link is
# broken.
# Usage: docs.sh [FOLDER]; replaces the content of FOLDER (default: build/docs).
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1-}" in
  -h | --help)
    sed -n '2,5s/^# //p' "$0"
    exit 0
    ;;
  -*)
    echo "docs.sh: unknown option \"$1\"; only the name of a folder may follow" >&2
    exit 2
    ;;
esac

scripts/packages.sh
version=$(sed -nE 's/^ *VERSION ([0-9]+\.[0-9]+\.[0-9]+).*/\1/p' CMakeLists.txt | head -n 1)
/usr/bin/python3 -B docs/site/build_site.py . "${1:-build/docs}" "$version"
echo "${1:-build/docs}/index.html"

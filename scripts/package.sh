#!/usr/bin/env bash
# Builds the packages in build/packages: the archive, the archive of the debug
# information, the installer (MSI) and SHA256SUMS.
#
#   package.sh               builds the preset `package` and packs it
#   package.sh --build FOLDER  packs this finished Windows build, with its own class id
#   package.sh --twice       also builds and packs a copy of the sources in another folder, and compares
#
# Files in the packages have the time of the last commit; SOURCE_DATE_EPOCH overrides it.
set -euo pipefail
cd "$(dirname "$0")/.."

build=
twice=
while [ $# -gt 0 ]; do
  case "$1" in
    -h | --help)
      sed -n '2,9s/^# \{0,1\}//p' "$0"
      exit 0
      ;;
    --build)
      [ $# -ge 2 ] || {
        echo "package.sh: --build: the name of a folder must follow" >&2
        exit 2
      }
      build=$2
      shift
      ;;
    --twice) twice=yes ;;
    *)
      echo "package.sh: unknown argument \"$1\"; see package.sh --help" >&2
      exit 2
      ;;
  esac
  shift
done

if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
  SOURCE_DATE_EPOCH=$(git log -1 --format=%ct) || {
    echo "package.sh: this is no git repository: set SOURCE_DATE_EPOCH" >&2
    exit 1
  }
fi
export SOURCE_DATE_EPOCH
python=/usr/bin/python3 # Debian's own Python; others may be installed, too

scripts/packages.sh
if [ -z "$build" ]; then
  build=build/package
  cmake --preset package >/dev/null
  cmake --build --preset package --parallel "$(nproc)"
fi
rm -rf build/packages
"$python" -B packaging/make_packages.py --build "$build" --output build/packages
if [ -n "$twice" ]; then
  copy=$(mktemp -d)
  git ls-files -z --cached --others --exclude-standard | xargs -0 cp --parents -t "$copy"
  CCACHE_DISABLE=1 "$copy/scripts/package.sh"
  "$python" -B packaging/compare_packages.py build/packages "$copy/build/packages" || {
    echo "package.sh: the second build is kept in $copy" >&2
    exit 1
  }
  rm -rf "$copy"
fi

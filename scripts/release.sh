#!/usr/bin/env bash
# Checks that a release names one version everywhere: the tag vX.Y.Z at the current commit, CMakeLists.txt,
# CHANGELOG.md with its date, the documents, the version resources in build/package, the packages in
# build/packages. Changes nothing; run scripts/package.sh before.
# Usage: release.sh [--tree] (--tree: the sources alone, without tag, products and packages)
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-}" in
  "" | --tree) ;;
  -h | --help)
    sed -n '2,5s/^# //p' "$0"
    exit 0
    ;;
  *)
    echo "release.sh: unknown argument \"$1\"; only --tree is one" >&2
    exit 2
    ;;
esac
exec /usr/bin/python3 -B packaging/check_release.py "$@"

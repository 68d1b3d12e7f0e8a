#!/usr/bin/env bash
# Prints the longest tests of the last CTest run in a build folder, with their seconds.
# Usage: longest_tests.sh FOLDER
set -euo pipefail

if [ $# -ne 1 ] || [ "$1" = -h ] || [ "$1" = --help ]; then
  sed -n '2,3s/^# //p' "$0"
  [ $# -eq 1 ] && exit 0
  exit 2
fi
echo
echo "Where the time of the tests went (seconds):"
# awk reads all input. With head, sort would fail because its reader has closed the pipe, and so would the
# suite.
sed '/^---/,$d' "$1/Testing/Temporary/CTestCostData.txt" | sort -k3,3nr |
  awk 'NR <= 12 { printf "  %-52s %6.1f\n", $1, $3 }'

#!/usr/bin/env bash
# Runs a Windows program under Wine in the prefix that WINEPREFIX names, else in one under build/.
# CTest uses it as the emulator of the Windows build. Usage: run_with_wine.sh PROGRAM.exe [ARGUMENT…]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix}
export WINEDEBUG=${WINEDEBUG:--all}
mkdir -p "$(dirname "$WINEPREFIX")"
exec wine "$@"

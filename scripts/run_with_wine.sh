#!/usr/bin/env bash
# Runs a Windows program under Wine in the prefix that WINEPREFIX names, else in one under build/,
# which is made when it does not exist. CTest uses it as the emulator of the Windows build.
# Usage: run_with_wine.sh PROGRAM.exe [ARGUMENT…]; exits with the program's code.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix}
export WINEDEBUG=${WINEDEBUG:--all}
# Neither .NET nor a browser is needed: without this Wine offers to download them, in a dialog. And no
# debugger: after it, a program that crashed would end with code 0.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml,winedbg.exe=}

# Debian's /usr/bin/wine remarks on standard error that its 32-bit half is missing.
wine=(/usr/lib/wine/wine64)
[[ -x ${wine[0]} ]] || wine=(wine)
# Address randomization puts the heap of Wine's loader onto a page that Wine needs, about once in 6,000
# starts: the process then ends with 1 before its program begins, without a message. Programs that this
# one starts inherit the setting. Some containers do not allow it.
if setarch -R true 2>/dev/null; then
  wine=(setarch -R "${wine[@]}")
fi

# Making a prefix takes seconds; a second process that uses it meanwhile would find half of it.
prepare_prefix() {
  mkdir -p "$WINEPREFIX"
  (
    flock 9
    [[ -f $WINEPREFIX/prepared ]] && exit
    # Wine must not hold the lock for as long as its services live.
    DISPLAY='' "${wine[@]}" wineboot --init 9>&- && touch "$WINEPREFIX/prepared"
  ) 9>"$WINEPREFIX.lock"
}

# Wine's services start with its first program and outlive the last one by two seconds. They would
# keep that program's output open, and whoever reads it through a pipe would wait for them. So they
# are started by a program of no importance, apart from our output.
start_services() { "${wine[@]}" hostname; }

[[ -f $WINEPREFIX/prepared ]] || prepare_prefix </dev/null >/dev/null 2>&1 || {
  echo "run_with_wine.sh: can't make the Wine prefix $WINEPREFIX" >&2
  exit 1
}
start_services </dev/null >/dev/null 2>&1 || true
exec "${wine[@]}" "$@"

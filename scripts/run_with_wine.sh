#!/usr/bin/env bash
# Runs a Windows program under Wine in the prefix WINEPREFIX, else in one under build/. The prefix is
# created if it does not exist. CTest uses this script as the emulator of the Windows build.
# Usage: run_with_wine.sh PROGRAM.exe [ARGUMENT…]; exits with the program's code.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix}
export WINEDEBUG=${WINEDEBUG:--all}
# Disables .NET and the browser, because Wine would otherwise open a dialog to download them. Also disables
# the debugger, because with it a crashed program would end with exit code 0.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml,winedbg.exe=}

# Debian's /usr/bin/wine prints a warning to standard error that its 32-bit part is missing.
wine=(/usr/lib/wine/wine64)
[[ -x ${wine[0]} ]] || wine=(wine)
# With address space randomization, the heap of Wine's loader occupies a page that Wine needs, about once in
# 6,000 starts. The process then ends with exit code 1 before the program starts, without a message. Child
# processes inherit the setting. Some containers do not allow it.
if setarch -R true 2>/dev/null; then
  wine=(setarch -R "${wine[@]}")
fi

# Creating a prefix takes ten seconds and 700 MB. It is therefore done once, under build/, and each prefix is a
# copy of that one: with links to Wine's programs, which nothing changes, and copies of all else. The locks
# prevent a second process from using an incomplete one. Wine must not inherit them; otherwise its services
# would hold them as long as they run.
template=$root/build/wine-template

make_template() {
  [[ -f $template.prepared ]] ||
    { DISPLAY='' WINEPREFIX=$template "${wine[@]}" wineboot --init 9>&- 8>&- &&
      WINEPREFIX=$template wait_for_services 9>&- 8>&- &&
      touch "$template.prepared"; }
}

# Waits until Wine's services have ended, which write the registry last.
wait_for_services() {
  local server=/usr/lib/wine/wineserver64
  [[ -x $server ]] || server=wineserver
  "$server" --wait
}

copy_template() {
  # Another file system takes no links.
  cp -a --link "$template/." "$WINEPREFIX" 2>/dev/null ||
    cp -a --remove-destination "$template/." "$WINEPREFIX" || return
  # Debian's Wine: the folder with the sockets of the prefix's services.
  rm -f "$WINEPREFIX/wineserver"
  find "$WINEPREFIX" -type f -links +1 ! -name '*.dll' ! -name '*.exe' ! -name '*.nls' ! -name '*.sys' \
    -exec sh -c 'for file; do cp -p "$file" "$file.own" && mv -f "$file.own" "$file" || exit; done' sh '{}' +
}

prepare_prefix() {
  mkdir -p "$WINEPREFIX" "$root/build"
  (
    flock 9
    [[ -f $WINEPREFIX/prepared ]] && exit
    flock 8
    # The mark comes last, because other processes read it without the lock.
    make_template && copy_template && touch "$WINEPREFIX/prepared"
  ) 9>"$WINEPREFIX.lock" 8>"$template.lock"
}

# Wine's services start with its first program and end two seconds after the last one. They would keep that
# program's output open, so that the reader of a pipe would have to wait for them. Therefore a dummy program
# starts them, without our output.
start_services() { "${wine[@]}" hostname; }

[[ -f $WINEPREFIX/prepared ]] || prepare_prefix </dev/null >/dev/null 2>&1 || {
  echo "run_with_wine.sh: can't make the Wine prefix $WINEPREFIX" >&2
  exit 1
}
start_services </dev/null >/dev/null 2>&1 || true
exec "${wine[@]}" "$@"

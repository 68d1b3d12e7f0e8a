#!/usr/bin/env bash
# Runs a command with virtual cameras plugged in under Wine:
#
#   with_cameras.sh [--config FILE] COMMAND [ARGUMENT…]
#
# Creates the Wine prefix if needed (WINEPREFIX, else build/wine-prefix), registers the cameras of FILE
# (default: the two of virtual_camera/configurations/demo.json) instead of those registered before, runs
# COMMAND and exits with its code; 125 if the cameras can't be registered.
#
# A COMMAND whose name ends in .exe is run through Wine. A name without a folder is also searched among the
# build's products and examples. Other commands are run directly, with WINEPREFIX and
# BORVAN_VIRTUAL_CAMERA set for the Windows programs that they start with run_with_wine.sh.
#
# A FILE of this source tree is copied to build/cameras/ first, so that the cameras' state, flash and
# trace files are written there; any other FILE is used in place. BORVAN_BIN is the folder with
# virtual-camera.exe (default: build/windows/bin).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd -P)
bin=${BORVAN_BIN:-$root/build/windows/bin}
export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix}

fail() {
  echo "with_cameras.sh: $1" >&2
  exit 125
}

case "${1-}" in
  -h | --help)
    sed -n '2,16s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac

config=$root/virtual_camera/configurations/demo.json
if [[ ${1-} == --config ]]; then
  [[ $# -ge 2 ]] || fail "--config: the name of a configuration file must follow"
  config=$2
  shift 2
fi
[[ $# -ge 1 ]] || fail "usage: with_cameras.sh [--config FILE] COMMAND [ARGUMENT…]"
[[ -f $config ]] || fail "--config: no such file: $config"
[[ -f $bin/virtual-camera.exe ]] ||
  fail "$bin/virtual-camera.exe is missing: build the Windows preset first (scripts/build.sh)"

config=$(realpath "$config")
if [[ $config == "$root"/* && $config != "$root"/build/* ]]; then
  copy=$root/build/cameras/$(basename "$config")
  mkdir -p "$root/build/cameras"
  cmp -s "$config" "$copy" || cp "$config" "$copy"
  config=$copy
fi

# Wine maps the whole file system to drive Z.
export BORVAN_VIRTUAL_CAMERA="Z:${config//\//\\}"

log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! "$root/scripts/run_with_wine.sh" "$bin/virtual-camera.exe" register </dev/null >"$log" 2>&1; then
  cat "$log" >&2
  fail "the cameras of $config can't be registered"
fi
rm -f "$log"

command=$1
shift
if [[ $command != *.exe ]]; then
  exec "$command" "$@"
fi
if [[ $command != */* && ! -f $command ]]; then
  for folder in "$bin" "$bin/../example-programs"; do
    if [[ -f $folder/$command ]]; then
      command=$folder/$command
      break
    fi
  done
fi
exec "$root/scripts/run_with_wine.sh" "$command" "$@"

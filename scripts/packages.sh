#!/usr/bin/env bash
# Installs the Debian 12 packages that building, testing and the demo need; does nothing when all
# are there. Without root it prints the command to run and fails.
# Usage: packages.sh [--missing]; --missing prints the names of the missing packages and installs nothing.
set -euo pipefail

# The one list of what a machine needs.
packages=(
  # builds
  cmake ninja-build ccache
  g++ clang libclang-rt-14-dev
  g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 llvm lld
  # libraries: tests, benchmarks, tools
  googletest libbenchmark-dev nlohmann-json3-dev libcli11-dev libfmt-dev librapidxml-dev libboost1.81-dev
  # packages; the promised interface
  wixl msitools abigail-tools
  # projects that find the installed library
  pkg-config
  # image files of others, to compare with
  srecord python3-intelhex binutils
  # running Windows programs
  wine wine64
  # checks
  clang-format clang-tidy shellcheck pylint python3
  # shells whose completion scripts are run
  zsh fish
  # the documentation as a site
  doxygen python3-markdown python3-pygments libjs-lunr
  # benchmarks: a peer to compare with
  flashrom
  # fetching packages of npm over HTTPS
  ca-certificates
  # tests of the workbench's page in a browser
  chromium
  # demo: an image to flash, and looking at bytes and answers
  seabios xxd jq tmux python3-jsonschema
)
# Node.js is often installed from elsewhere, and Debian's would be in its way.
command -v npm >/dev/null || packages+=(nodejs npm)

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$status" = installed ] || missing+=("$package")
done
if [ "${1-}" = --missing ]; then
  echo "${missing[*]-}"
  exit 0
fi
[ ${#missing[@]} -gt 0 ] || exit 0

if [ "$(id -u)" -ne 0 ]; then
  {
    echo "packages.sh: packages are missing; run this line, then start again:"
    echo "sudo apt-get update && sudo apt-get install -y --no-install-recommends ${missing[*]}"
  } >&2
  exit 1
fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -q
apt-get install -q -y --no-install-recommends "${missing[@]}"

#!/usr/bin/env bash
# Installs the Debian 12 packages that building, testing and the demo need; does nothing when all
# are there. Without root it prints the command to run and fails.
# Usage: packages.sh [--missing]; --missing prints the names of the missing packages and installs nothing.
set -euo pipefail

# The only list of the packages that a machine needs.
packages=(
  # building
  cmake ninja-build ccache
  g++ clang libclang-rt-14-dev
  g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 llvm lld
  # libraries: tests, benchmarks, tools
  googletest libbenchmark-dev nlohmann-json3-dev libcli11-dev libfmt-dev librapidxml-dev libboost1.81-dev
  # packages, and checks of the binary interface
  wixl msitools abigail-tools
  # example projects that use the installed library
  pkg-config
  # other programs for image files, for comparison
  srecord python3-intelhex binutils
  # running Windows programs
  wine wine64
  # checks
  clang-format clang-tidy shellcheck pylint python3
  # shells to test the completion scripts
  zsh fish
  # the documentation as a site
  doxygen python3-markdown python3-pygments libjs-lunr
  # benchmarks: a library for comparison
  flashrom
  # downloading npm packages over HTTPS
  ca-certificates
  # browser tests of the workbench's page
  chromium
  # demo: an image to program, and viewing bytes and answers
  seabios xxd jq tmux python3-jsonschema
)
# Node.js is often installed from elsewhere and would conflict with Debian's.
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

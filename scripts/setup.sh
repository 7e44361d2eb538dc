#!/usr/bin/env bash
# Installs what building and testing VexcapLib needs on Debian, only what is missing.
set -euo pipefail

packages=(
  cmake make g++ git pkg-config
  googletest libgtest-dev libgmock-dev libbenchmark-dev libyuv-dev libpng-dev python3
  g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 wine64
  clang libclang-rt-14-dev llvm
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
    missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update
$sudo apt-get install -y --no-install-recommends "${missing[@]}"

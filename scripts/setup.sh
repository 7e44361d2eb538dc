#!/usr/bin/env bash
# Installs, on Debian, what one job needs, and only what is missing:
#   bash scripts/setup.sh demo    the demo and an installable build (library and vexcap-capture)
#   bash scripts/setup.sh test    every test run of scripts/test.sh, the style check (the default)
#   bash scripts/setup.sh bench   the benchmarks
#   bash scripts/setup.sh fuzz    the fuzz targets
set -euo pipefail

job="${1:-test}"
build=(cmake make g++ libcli11-dev zlib1g-dev)
tests=(git pkg-config googletest libgtest-dev libgmock-dev libpng-dev python3 python3-numpy python3-pytest)
windows=(g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 libz-mingw-w64-dev wine64 llvm)
fuzzing=(cmake make clang libclang-rt-14-dev)
style=(clang-format clang-tidy)
case "$job" in
  demo) packages=("${build[@]}") ;;
  test) packages=("${build[@]}" "${tests[@]}" "${windows[@]}" "${fuzzing[@]}" "${style[@]}") ;;
  bench) packages=("${build[@]}" "${tests[@]}" libbenchmark-dev libyuv-dev) ;;
  fuzz) packages=("${fuzzing[@]}") ;;
  *) echo "usage: $0 [demo|test|bench|fuzz]" >&2; exit 2 ;;
esac

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

#!/usr/bin/env bash
# Checks an installed VexcapLib as a host project meets it: the files under the prefix, the
# library's soname and export table, then hosts built with find_package and with pkg-config
# that open the default virtual camera and take frames.
#   tests/consumer/run.sh PREFIX [--release]   (--release: the library carries no debug info)
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
repo="$(cd "$here/../.." && pwd)"
prefix="$(cd "$1" && pwd)"
release="${2:-}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

passed=0
failed=0
check() {  # check NAME COMMAND...
  local name="$1"
  shift
  if "$@" >"$work/last.log" 2>&1; then
    passed=$((passed + 1))
    echo "PASS  $name"
  else
    failed=$((failed + 1))
    echo "FAIL  $name"
    sed 's/^/      /' "$work/last.log" | tail -n 30
  fi
}

version="$(sed -n 's/^#define VEXCAP_VERSION_STRING "\(.*\)"$/\1/p' "$repo/include/vexcap/vexcap.h")"
libdir="$prefix/lib"
[ -d "$libdir/cmake/VexcapLib" ] || libdir="$(dirname "$(dirname "$(dirname "$(find "$prefix" -name VexcapLibConfig.cmake | head -n 1)")")")"

installed_files() {
  for file in include/vexcap/vexcap.h bin/vexcap-capture share/doc/VexcapLib/LICENSE \
              share/doc/VexcapLib/README.md share/doc/VexcapLib/CHANGELOG.md share/doc/VexcapLib/host-guide.md; do
    [ -f "$prefix/$file" ] || { echo "missing $file"; return 1; }
  done
  for file in libVexcapLib.so.1.0.0 cmake/VexcapLib/VexcapLibConfig.cmake \
              cmake/VexcapLib/VexcapLibConfigVersion.cmake pkgconfig/vexcaplib.pc; do
    [ -f "$libdir/$file" ] || { echo "missing $libdir/$file"; return 1; }
  done
  [ "$(readlink "$libdir/libVexcapLib.so")" = libVexcapLib.so.1 ] &&
    [ "$(readlink "$libdir/libVexcapLib.so.1")" = libVexcapLib.so.1.0.0 ]
}
soname() { readelf -d "$libdir/libVexcapLib.so.1.0.0" | grep -q 'Library soname: \[libVexcapLib.so.1\]'; }
no_debug_info() { ! readelf -S "$libdir/libVexcapLib.so.1.0.0" | grep -q '\.debug_info'; }

check "installed files and library links" installed_files
check "soname libVexcapLib.so.1" soname
check "exports the 33 functions" "$repo/tests/standalone/check_exports.sh" "$libdir/libVexcapLib.so.1.0.0" \
  "$repo/tests/standalone/exports.txt"
if [ "$release" = --release ]; then check "no debug information in a Release library" no_debug_info; fi

find_package_hosts() {
  cmake -S "$here" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release \
        -DEXAMPLE_HOST="$repo/tools/example_host.c" >/dev/null &&
    cmake --build "$work/cmake-build" >/dev/null &&
    "$work/cmake-build/cxx-host" && "$work/cmake-build/example-host"
}
check "find_package(VexcapLib): hosts build and stream" find_package_hosts

# Added with add_subdirectory, VexcapLib brings the library and nothing else to build.
library_alone() {
  cmake -S "$here" -B "$work/subdirectory-build" -DVEXCAPLIB_SOURCE_DIR="$repo" \
        -DEXAMPLE_HOST="$repo/tools/example_host.c" >/dev/null &&
    cmake --build "$work/subdirectory-build" --target help >"$work/targets.txt" &&
    grep -q '\.\.\. VexcapLib$' "$work/targets.txt" &&
    ! grep -E '\.\.\. (vexcap_tests|vexcap-capture|vexcap_bench|gtest|fuzz_.*)$' "$work/targets.txt" &&
    grep -q '^VEXCAP_BUILD_TESTS:BOOL=OFF$' "$work/subdirectory-build/CMakeCache.txt"
}
check "add_subdirectory(VexcapLib): the library alone" library_alone

pkg_config_host() {
  export PKG_CONFIG_PATH="$libdir/pkgconfig"
  [ "$(pkg-config --modversion vexcaplib)" = "$version" ] &&
    # shellcheck disable=SC2046
    cc -std=c11 -Wall -Wextra -pedantic -o "$work/pc-host" "$repo/tools/example_host.c" \
       $(pkg-config --cflags --libs vexcaplib) &&
    LD_LIBRARY_PATH="$libdir" "$work/pc-host"
}
check "pkg-config vexcaplib: the example host builds and streams" pkg_config_host

echo "consumer: $passed passed, $failed failed"
[ "$failed" -eq 0 ]

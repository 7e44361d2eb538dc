#!/usr/bin/env bash
# Every test: native, AddressSanitizer + UndefinedBehaviorSanitizer, ThreadSanitizer (each with the
# stress harness: 10 s native, 60 s under each sanitizer, and the endurance check: 10,000
# open/stream/close cycles native, fewer under the sanitizers), the fuzz targets 30 s each, the
# Windows build under Wine (stress 30 s, 500 endurance cycles); then the product DLL under Wine
# (mingw-double: the double's suite) and the shipping build's export table and import library.
# Installs what is missing first.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh

run_preset() {
  local preset="$1"
  echo "==== $preset ===="
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
}

run_preset native
run_preset asan
run_preset tsan
echo "==== fuzz ===="
bash scripts/fuzz.sh 30
run_preset mingw

# The product DLL under Wine: its tests where the capture classes are missing and the behaviour
# suite on the Windows double (scripts/windows-double.sh prepares that prefix as a fixture).
run_preset mingw-double

echo "==== mingw-product ===="
cmake --preset mingw-product >/dev/null
cmake --build --preset mingw-product
tests/standalone/check_exports.sh build/mingw-product/VexcapLib.dll tests/standalone/exports.txt
tests/standalone/check_exports.sh build/mingw-product/VexcapLib.lib tests/standalone/exports.txt
echo "All test runs passed."

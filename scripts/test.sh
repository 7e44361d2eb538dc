#!/usr/bin/env bash
# Every test: native, AddressSanitizer + UndefinedBehaviorSanitizer, ThreadSanitizer (each with the
# stress harness: 10 s native, 60 s under each sanitizer, and the endurance check: 10,000
# open/stream/close cycles native, fewer under the sanitizers), the Python package's tests on the
# native build, the fuzz targets 30 s each, the
# Windows build under Wine (stress 30 s, 500 endurance cycles); then the product DLL under Wine and
# its export table. Installs what is missing first.
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
echo "==== python ===="
bash scripts/test-python.sh
run_preset asan
run_preset tsan
echo "==== fuzz ===="
bash scripts/fuzz.sh 30
run_preset mingw

echo "==== mingw-product ===="
cmake --preset mingw-product >/dev/null
cmake --build --preset mingw-product
ctest --preset mingw-product
tests/standalone/check_exports.sh build/mingw-product/VexcapLib.dll tests/standalone/exports.txt
echo "All test runs passed."

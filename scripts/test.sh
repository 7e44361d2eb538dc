#!/usr/bin/env bash
# Every test: native, AddressSanitizer + UndefinedBehaviorSanitizer, ThreadSanitizer (each with the
# stress harness: 10 s native, 60 s under each sanitizer, and the endurance check: 10,000
# open/stream/close cycles native, fewer under the sanitizers), the Python package's tests on the
# native build, the fuzz targets 30 s each, the Windows build under Wine (stress 30 s, 500
# endurance cycles); then the product DLL under Wine (mingw-double: the Windows double's suite and
# the tool's compliance run on it) and the shipping build's export table, import library and
# install. Installs what is missing first.
#
# The native run and the installed package are checked in a clone of this tree's commit (plus
# any uncommitted changes to tracked files) with nothing beside it: the repository alone builds,
# passes, installs and serves a host project (tests/consumer/). The clone lives in build/clone/
# and is brought up to date on each run, so its builds stay incremental.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh test

# The conventions on the last commit's changes (scripts/check-style.sh alone checks everything
# since the merge base with main).
echo "==== style ===="
BASE="${STYLE_BASE:-HEAD~1}" bash scripts/check-style.sh

run_preset() {
  local preset="$1"
  echo "==== $preset ===="
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
}

# build/clone/VexcapLib at the tree's state; build/clone holds nothing else beside it.
update_clone() {
  local clone=build/clone/VexcapLib commit
  commit="$(git stash create)"
  commit="${commit:-$(git rev-parse HEAD)}"
  if [ -n "$(git ls-files --others --exclude-standard)" ]; then
    echo "note: files git does not track are left out of the clone:"
    git ls-files --others --exclude-standard | sed 's/^/  /'
  fi
  if [ ! -d "$clone/.git" ]; then
    rm -rf "$clone"
    git clone --quiet --shared --no-checkout . "$clone"
  fi
  git -C "$clone" checkout --quiet --force --detach "$commit"
  git -C "$clone" clean -fdq
}

update_clone
(
  cd build/clone/VexcapLib
  [ "$(ls -A ..)" = "VexcapLib" ]  # nothing beside the clone
  run_preset native
  echo "==== python ===="
  bash scripts/test-python.sh
  echo "==== release: install and consumer ===="
  cmake --preset release >/dev/null
  cmake --build --preset release
  rm -rf build/installed
  cmake --install build/release --prefix build/installed >/dev/null
  bash tests/consumer/run.sh build/installed --release
)
run_preset asan
run_preset tsan
echo "==== fuzz ===="
bash scripts/fuzz.sh 30
echo "==== thread-safety ===="
cmake --preset thread-safety >/dev/null
cmake --build --preset thread-safety
run_preset mingw

# The product DLL under Wine: its tests where the capture classes are missing, the behaviour
# suite and the tool's compliance run on the Windows double (scripts/windows-double.sh prepares
# that prefix as a fixture).
run_preset mingw-double

echo "==== mingw-product ===="
cmake --preset mingw-product >/dev/null
cmake --build --preset mingw-product
tests/standalone/check_exports.sh build/mingw-product/VexcapLib.dll tests/standalone/exports.txt
tests/standalone/check_exports.sh build/mingw-product/VexcapLib.lib tests/standalone/exports.txt
echo "==== mingw-product: install ===="
rm -rf build/mingw-product-installed
cmake --install build/mingw-product --prefix build/mingw-product-installed >/dev/null
for file in bin/VexcapLib.dll lib/libVexcapLib.dll.a lib/VexcapLib.lib include/vexcap/vexcap.h \
            lib/cmake/VexcapLib/VexcapLibConfig.cmake lib/pkgconfig/vexcaplib.pc; do
  [ -f "build/mingw-product-installed/$file" ] || { echo "the Windows install lacks $file"; exit 1; }
done
echo "the Windows install holds the DLL, both import libraries, the header and the package files"
echo "All test runs passed."

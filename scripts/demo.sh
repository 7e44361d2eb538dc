#!/usr/bin/env bash
# The main job: builds the library (build/release/libVexcapLib.so) and vexcap-capture, then runs
# the tool on the virtual camera: lists the cameras and captures infrared and colour frames into
# demo-output/ (PNG files and frames.csv). With arguments, runs vexcap-capture with them instead
# (try --help).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh demo
cmake --preset release >/dev/null
echo "Building libVexcapLib.so and vexcap-capture (log: build/release/demo-build.log)..."
if ! cmake --build --preset release --target VexcapLib vexcap-capture >build/release/demo-build.log 2>&1; then
  tail -n 40 build/release/demo-build.log
  exit 1
fi
tool=build/release/tools/vexcap-capture/vexcap-capture

if [ $# -gt 0 ]; then
  exec "$tool" "$@"
fi
"$tool" list
echo
"$tool" capture --reader infrared --frames 30 --every 10 --out demo-output/infrared --overwrite
echo
"$tool" capture --reader color --frames 30 --every 10 --out demo-output/colour --overwrite
echo
echo "Open the PNG files and frames.csv in demo-output/. More: $tool --help"
echo "The library is build/release/libVexcapLib.so; install it with"
echo "  cmake --install build/release --prefix PREFIX"

#!/usr/bin/env bash
# The main job: builds the library and vexcap-capture, then runs it on the virtual camera:
# lists the cameras and captures infrared and colour frames into demo-output/ (PNG files and
# frames.csv). With arguments, runs vexcap-capture with them instead (try --help).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh
cmake --preset native >/dev/null
echo "Building vexcap-capture (log: build/native/demo-build.log)..."
if ! cmake --build --preset native --target vexcap-capture >build/native/demo-build.log 2>&1; then
  tail -n 40 build/native/demo-build.log
  exit 1
fi
tool=build/native/tools/vexcap-capture/vexcap-capture

if [ $# -gt 0 ]; then
  exec "$tool" "$@"
fi
"$tool" list
echo
"$tool" capture --reader infrared --frames 30 --every 10 --out demo-output/infrared
echo
"$tool" capture --reader color --frames 30 --every 10 --out demo-output/colour
echo
echo "Open the PNG files and frames.csv in demo-output/. More: $tool --help"

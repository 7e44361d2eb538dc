#!/usr/bin/env bash
# The main job: builds the library and runs the host on the virtual camera.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh
cmake --preset native >/dev/null
cmake --build --preset native --target vexcap-example-host
build/native/tools/vexcap-example-host "$@"

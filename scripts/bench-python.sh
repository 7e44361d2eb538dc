#!/usr/bin/env bash
# Frames per second and CPU per frame through the Python package's frames() next to the C
# callback path, on the virtual camera at 640x480 Gray8 and 1920x1080 NV12 (docs/python.md has
# the figures). ROUNDS, FRAMES and FPS change the run (defaults 5, 300, 60).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh
cmake --preset native >/dev/null
cmake --build --preset native --target VexcapLibScenarios vexcap-frame-path-host
PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 python/bench/compare.py \
  --rounds "${ROUNDS:-5}" --frames "${FRAMES:-300}" --fps "${FPS:-60}"

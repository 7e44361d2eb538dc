#!/usr/bin/env bash
# The Python package's tests: python/tests on the native build's libVexcapLib.so (the default
# virtual camera), then python/scenario_tests on libVexcapLibScenarios.so (other frame layouts).
# Debian's python3 runs them, where python3-numpy and python3-pytest are installed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh
cmake --preset native >/dev/null
cmake --build --preset native --target VexcapLib VexcapLibScenarios

export PYTHONDONTWRITEBYTECODE=1
/usr/bin/python3 -m pytest -p no:cacheprovider -q python/tests
/usr/bin/python3 -m pytest -p no:cacheprovider -q python/scenario_tests

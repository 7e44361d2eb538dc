#!/usr/bin/env bash
# Builds the native preset with the benchmarks and runs them: every benchmark once per round,
# each round in a new random order, ten rounds; then prints the tables of docs/performance.md
# (times as median and quartiles over the rounds, ratios taken within each round, the machine
# and its load). An argument filters the benchmarks (a regular expression).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh bench
cmake --preset native -DVEXCAP_BUILD_BENCH=ON >/dev/null
cmake --build --preset native --target vexcap_bench >&2

results=build/native/bench-results.json
build/native/bench/vexcap_bench \
  --benchmark_filter="${1:-.}" \
  --rounds="${ROUNDS:-10}" \
  --benchmark_enable_random_interleaving=true \
  --benchmark_min_time="${MIN_TIME:-0.05}" \
  --results="$results" >/dev/null
python3 bench/table.py "$results"

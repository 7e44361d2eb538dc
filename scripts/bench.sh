#!/usr/bin/env bash
# Builds the native preset with the benchmarks and runs them: ten repetitions of every
# benchmark, interleaved in random order, then prints the tables of docs/performance.md
# (medians with min..max). An argument filters the benchmarks (a regular expression).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup.sh bench
cmake --preset native -DVEXCAP_BUILD_BENCH=ON >/dev/null
cmake --build --preset native --target vexcap_bench

results=build/native/bench-results.json
build/native/bench/vexcap_bench \
  --benchmark_filter="${1:-.}" \
  --benchmark_repetitions="${REPETITIONS:-10}" \
  --benchmark_enable_random_interleaving=true \
  --benchmark_min_time="${MIN_TIME:-0.05}" \
  --benchmark_out="$results" --benchmark_out_format=json >/dev/null
python3 bench/table.py "$results"

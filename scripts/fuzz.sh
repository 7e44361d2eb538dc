#!/usr/bin/env bash
# Builds the libFuzzer targets (the fuzz preset) and runs each for SECONDS seconds (default 30),
# starting from the seed corpus in fuzz/corpus/<target>/. New inputs go to build/fuzz/corpus/,
# crashes to build/fuzz/artifacts/; the script fails on the first target that finds one.
#   bash scripts/fuzz.sh [SECONDS] [TARGET...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds="${1:-30}"
shift || true
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(pixel_kernels rotation_text format_table extended_properties extension_unit
           discovery_strings open_parameters)
fi

bash scripts/setup.sh fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}"

mkdir -p build/fuzz/artifacts
for target in "${targets[@]}"; do
  work="build/fuzz/corpus/$target"
  mkdir -p "$work"
  echo "==== fuzz_$target: ${seconds} s ===="
  # -timeout: one input taking 30 s is a hang. Log lines of the library are discarded by the
  # targets themselves; libFuzzer's own report goes to a log next to the artifacts.
  log="build/fuzz/artifacts/$target.log"
  if ! build/fuzz/fuzz/fuzz_"$target" -max_total_time="$seconds" -timeout=30 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/artifacts/$target-" "$work" "fuzz/corpus/$target" >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "fuzz_$target FAILED (reproduce: build/fuzz/fuzz/fuzz_$target build/fuzz/artifacts/$target-crash-...)"
    exit 1
  fi
  grep -E '^(Done|stat::number_of_executed_units|stat::peak_rss_mb)' "$log" | tr '\n' ' '
  grep -Eo 'cov: [0-9]+ ft: [0-9]+ corp: [0-9]+' "$log" | tail -n 1
done
echo "All fuzz targets clean."

#!/usr/bin/env bash
# usage: scripts/bench.sh [FILTER]
# Builds the benchmarks and prints, for every case whose name matches FILTER, ours beside each peer and the floor as
# ratios of one run: medians of five repetitions. Programs run one after the other, so that none disturbs another.
set -euo pipefail
cd "$(dirname "$0")/.."
filter=${1:-.}
cmake --preset bench
cmake --build --preset bench

results=build/bench/results
rm -rf "$results"
mkdir -p "$results"
mapfile -t programs < <(find build/bench/bench -maxdepth 1 -name '*_bench' -type f | sort)
if [ "${#programs[@]}" -eq 0 ]; then
  echo "bench: no benchmarks under build/bench/bench" >&2
  exit 1
fi
for program in "${programs[@]}"; do
  name=$(basename "$program")
  echo "bench: $name" >&2
  "$program" --benchmark_filter="$filter" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_min_time=0.1 --benchmark_out_format=json --benchmark_out="$results/$name.json" >/dev/null
done
scripts/bench_table.py "$results"/*.json | tee "$results/table.md"

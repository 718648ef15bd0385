#!/usr/bin/env bash
# usage: scripts/fuzz.sh [SECONDS]
# Builds and runs every fuzz target for SECONDS (30), two at a time. Corpora grow under build/fuzz/corpus, seeded from
# fuzz/seeds/TARGET; inputs that broke something stay in build/fuzz/artifacts. Ends nonzero when there was one.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
cmake --preset fuzz
cmake --build --preset fuzz

# Stacks need names: the sanitizer's own symbolizer belongs to a large package, binutils is always there.
symbolizer=$(command -v llvm-symbolizer-19 addr2line | sed -n 1p)
export ASAN_SYMBOLIZER_PATH=$symbolizer UBSAN_OPTIONS=print_stacktrace=1

artifacts=build/fuzz/artifacts logs=build/fuzz/logs
mkdir -p "$artifacts" "$logs"
run_target() {
  target=$1 name=$(basename "$1")
  corpus=build/fuzz/corpus/$name
  mkdir -p "$corpus"
  inputs=("$corpus")
  if [ -d "fuzz/seeds/$name" ]; then inputs+=("fuzz/seeds/$name"); fi
  if [ -f "fuzz/$name.dict" ]; then inputs+=("-dict=fuzz/$name.dict"); fi
  if "$target" "${inputs[@]}" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$artifacts/$name-" >"$logs/$name.log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$logs/$name.log")
    echo "ok    $name: $runs runs in $seconds s"
  else
    echo "FOUND $name: $logs/$name.log says"
    grep -m 1 -A 20 -E 'ERROR:|runtime error:|Assertion|Sanitizer' "$logs/$name.log" || tail -n 20 "$logs/$name.log"
    sed -n 's/.*Test unit written to //p' "$logs/$name.log"
    return 1
  fi
}
export -f run_target
export seconds artifacts logs

mapfile -t targets < <(find build/fuzz/fuzz -maxdepth 1 -name '*_fuzz' -type f | sort)
if [ "${#targets[@]}" -eq 0 ]; then
  echo "fuzz: no targets under build/fuzz/fuzz" >&2
  exit 1
fi
printf '%s\0' "${targets[@]}" | xargs -0 -n 1 -P 2 bash -c 'run_target "$0"'
echo "fuzz: ${#targets[@]} targets, no findings"

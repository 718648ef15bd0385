#!/usr/bin/env bash
# usage: tests/race/first_use.sh PROGRAM [RUNS]
# Races first uses in RUNS (200) fresh processes, each of which begins elsewhere.
set -euo pipefail
program=$1
runs=${2:-200}
failed=0
for ((run = 0; run < runs; run++)); do
  "$program" "$((run * 7))" || failed=1
done
[ "$run" -gt 0 ] && exit "$failed"

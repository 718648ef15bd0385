#!/usr/bin/env bash
# usage: tests/race/first_use.sh RUNS COMMAND...
# Races first uses in RUNS fresh processes of the command, each of which begins elsewhere.
set -euo pipefail
runs=$1
shift
failed=0
for ((run = 0; run < runs; run++)); do
  "$@" "$((run * 7))" || failed=1
done
[ "$run" -gt 0 ] && exit "$failed"

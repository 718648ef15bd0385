#!/usr/bin/env bash
# usage: scripts/oracle.sh COMMAND [COUNT]
# COUNT generated texts (200,000) through COMMAND and through Node, in two halves at once; prints how often each rule
# explained a difference. Then a false answer is planted in each check, which the oracle must not pass.
set -euo pipefail
command=$(realpath -- "$1")
half=$(((${2:-200000} + 1) / 2))
here=$(dirname "$0")

node "$here/oracle.mjs" "$command" "$half" 1 &
first=$!
failed=0
node "$here/oracle.mjs" "$command" "$half" 2 || failed=1
wait "$first" || failed=1

while read -r operation; do
  if node "$here/oracle.mjs" "$command" 20 3 "$operation" >/dev/null 2>&1; then
    echo "oracle: passes a false answer to $operation" >&2
    failed=1
  fi
done < <(node "$here/oracle.mjs" --checks)
exit "$failed"

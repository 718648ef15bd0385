#!/usr/bin/env bash
# usage: scripts/operations_page.sh COMMAND PAGE
# Writes the page of all operations from `COMMAND list`: tab-separated family, operation, signature.
set -euo pipefail
command=$1 page=$2
new=$(mktemp)
trap 'rm -f "$new"' EXIT
{
  printf '# Operations\n\nWritten by `make docs` from `quorvel list`.\n'
  "$command" list | awk -F '\t' '
    $1 != family { family = $1; printf "\n## %s\n\n| operation | C++ |\n|---|---|\n", family }
    { gsub(/\|/, "\\|"); printf "| `%s` | `%s` |\n", $2, $3 }'
} >"$new"
mkdir -p "$(dirname "$page")"
cat "$new" >"$page"

#!/usr/bin/env bash
# Formats the tracked and new C++ files, or with --check tells which are not formatted. Each is read as C++ by name:
# by its content clang-format takes a header that speaks of NSString for Objective-C.
set -euo pipefail
cd "$(dirname "$0")/.."
check=0
[ "${1:-}" = --check ] && { check=1; shift; }
if [ $# -gt 0 ]; then files=("$@"); else mapfile -t files < <(git ls-files -co --exclude-standard -- '*.h' '*.cpp'); fi
status=0
for file in "${files[@]}"; do
  formatted=$(clang-format-19 --assume-filename="${file%.*}.cpp" < "$file"; printf x)
  current=$(cat "$file"; printf x)
  [ "$formatted" = "$current" ] && continue
  if [ $check = 1 ]; then
    echo "$file: not formatted (scripts/format.sh $file)"
    status=1
  else
    printf '%s' "${formatted%x}" > "$file"
  fi
done
exit $status

#!/usr/bin/env bash
# usage: scripts/tidy.sh BUILD_DIR
# clang-tidy over every source under quorvel/ and apps/ that BUILD_DIR compiles. A source whose preprocessed text and
# settings passed before is not looked at again; build/tidy remembers.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
export build
export passed=build/tidy
mkdir -p "$passed"
tidy_includes=$(pkg-config --cflags cairo libsecret-1)
export tidy_includes

tidy_one() {
  source=$1
  # The configuration, the version and what the compiler sees, comments included: NOLINT is one.
  key=$({ cat .clang-tidy; clang-tidy-19 --version; g++ -std=c++20 -E -C -P $tidy_includes -I . "$source"; } | sha256sum | cut -d' ' -f1)
  if [ -e "$passed/$key" ]; then return 0; fi
  if clang-tidy-19 --quiet --warnings-as-errors='*' --extra-arg=-Wno-unknown-warning-option -p "$build" "$source" 2>"$passed/$key.err"; then
    rm -f "$passed/$key.err"
    touch "$passed/$key"
  else
    grep -v 'warnings generated' "$passed/$key.err" >&2 || true
    rm -f "$passed/$key.err"
    return 1
  fi
}
export -f tidy_one

sources=$(find quorvel apps -name '*.cpp' | sort)
compiled=$(sed -n 's/^ *"file": "\(.*\)",*$/\1/p' "$build/compile_commands.json")
for source in $sources; do
  if grep -qxF -- "$PWD/$source" <<<"$compiled"; then echo "$source"; fi
done | xargs -r -n 1 -P 2 bash -c 'tidy_one "$0"'

#!/usr/bin/env bash
# usage: scripts/check.sh
# Every check of the tree that is not a test. All of them run; the script ends nonzero when one of them failed.
set -uo pipefail
cd "$(dirname "$0")/.."

# What is tracked, and what will be once it is added. A clone may belong to another user, whom git would not trust.
tree_files() { git -c safe.directory='*' ls-files -z --cached --others --exclude-standard -- "$@"; }
present() { xargs -0 -r sh -c 'for file; do if [ -f "$file" ]; then printf "%s\0" "$file"; fi; done' sh; }

failed=()
check() {
  local name=$1 start=$SECONDS
  shift
  if "$@"; then
    echo "check: $name: ok ($((SECONDS - start)) s)"
  else
    echo "check: $name: FAILED"
    failed+=("$name")
  fi
}

check_format() { tree_files '*.h' '*.cpp' | present | xargs -0 -r clang-format-19 --dry-run -Werror; }
check_style() { tree_files | present | xargs -0 -r scripts/check_style.py; }
# clang-tidy and the install tree need generated build files and a library.
build_release() {
  mkdir -p build
  { cmake --preset release && cmake --build --preset release; } >build/check.log 2>&1 || { cat build/check.log; false; }
}

check_symbols() {
  { cmake -S . -B build/shared -G Ninja -D CMAKE_BUILD_TYPE=Release -D CMAKE_CXX_COMPILER=g++ -D BUILD_SHARED_LIBS=ON \
      -D QUORVEL_TESTS=OFF -D QUORVEL_APPS=ON && cmake --build build/shared; } >build/check.log 2>&1 || { cat build/check.log; return 1; }
  scripts/check_symbols.sh build/shared/libquorvel.so
}

# Where the daemon is missing `make test` skips these; here they must run.
check_secret_service() {
  QUORVEL_REQUIRE_SERVICE=1 ctest --test-dir build/release --output-on-failure -R '^keychain\.(service|values\.secret-service)$' \
    --no-tests=error >build/check.log 2>&1 || { cat build/check.log; false; }
}

check "the checkers themselves" scripts/check_selftest.sh
check format check_format
check style check_style
check layers scripts/check_layers.py
check names scripts/check_names.py
check "headers alone and twice" scripts/check_headers.py
check build build_release
check "answers beside those of Node" scripts/oracle.sh build/release/apps/quorvel/quorvel
check "keychain under a Secret Service" check_secret_service
check "install tree" scripts/check_install.sh
check "symbols of the shared library" check_symbols
check clang-tidy scripts/tidy.sh build/release

if [ "${#failed[@]}" -gt 0 ]; then
  printf 'check: failed: %s\n' "${failed[@]}"
  exit 1
fi
echo "check: all passed"

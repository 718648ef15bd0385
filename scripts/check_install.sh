#!/usr/bin/env bash
# usage: scripts/check_install.sh
# Installs build/release into a scratch tree and builds tests/consumer against it, as an application would.
set -euo pipefail
cd "$(dirname "$0")/.."
scratch=build/check-install
rm -rf "$scratch"
mkdir -p "$scratch"
version=$(sed -n 's/^#define QUORVEL_VERSION_[A-Z]* \([0-9]*\)$/\1/p' quorvel/Version.h | paste -sd.)

quiet() { "$@" >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }; }
quiet cmake --install build/release --prefix "$PWD/$scratch/tree"
quiet cmake -S tests/consumer -B "$scratch/build" -G Ninja -D CMAKE_CXX_COMPILER=g++ \
  -D CMAKE_PREFIX_PATH="$PWD/$scratch/tree" -D wanted_version="$version"
quiet cmake --build "$scratch/build"

printed=$("$scratch/build/consumer")
if [ "$printed" != "$version" ]; then
  echo "tests/consumer/main.cpp:1: the installed library says version $printed, quorvel/Version.h says $version"
  exit 1
fi

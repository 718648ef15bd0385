#!/usr/bin/env bash
# usage: scripts/arm64.sh [CTEST ARGUMENTS...]
# Builds everything for 64-bit ARM and runs its tests under an emulator. The libraries that packages.txt names are fetched
# for that machine into build/arm64-sysroot and unpacked there: nothing of theirs runs, and this machine stays as it is.
# Left out are the slow tests and the repetitions in other locales; `ctest --preset arm64` has them too.
set -euo pipefail
cd "$(dirname "$0")/.."
sysroot=build/arm64-sysroot

make_sysroot() {
  rm -rf "$sysroot"
  mkdir -p "$sysroot"
  # Whatever else lies in a root would hide this machine's own files from the programs that the emulator runs.
  mmdebstrap --variant=extract --arch=arm64 --include="$1" --format=tar bookworm - |
    tar -x --no-same-owner -C "$sysroot" ./lib ./usr
  # Absolute links would lead out of it.
  find "$sysroot" -type l -lname '/*' -print0 | while IFS= read -r -d '' link; do
    ln -srfT "$sysroot$(readlink "$link")" "$link"
  done
  echo "$1" >"$sysroot/packages"
}

libraries=$(sed 's/#.*//' packages.txt | grep -e '-dev$' | paste -sd,)
if [ "$(cat "$sysroot/packages" 2>/dev/null)" != "$libraries" ]; then
  make_sysroot "$libraries"
fi
cmake --preset arm64
cmake --build --preset arm64
ctest --preset arm64 -j 2 -LE 'slow|locale' "$@"

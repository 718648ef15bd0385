#!/usr/bin/env bash
# usage: scripts/install-packages.sh LIST...
# Installs what the package lists name and this machine lacks; asks apt nothing when nothing is missing.
set -euo pipefail

if ! command -v dpkg-query >/dev/null; then
  echo "install-packages: no dpkg here; install what $* name by hand" >&2
  exit 0
fi

# No process substitution here: a bare root may lack /dev/fd.
lines() { tr -s '[:space:]' '\n' | sed '/^$/d' | sort -u; }
wanted=$(sed 's/#.*//' -- "$@" | lines)
# dpkg-query fails for a package that it never saw; whatever it does not list as installed is missing.
known=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' -- $wanted 2>/dev/null || true)
installed=$(sed -n 's/^installed //p' <<<"$known" | lines)
missing=()
for package in $wanted; do
  case $'\n'$installed$'\n' in
    *$'\n'"$package"$'\n'*) ;;
    *) missing+=("$package") ;;
  esac
done
if [ "${#missing[@]}" -eq 0 ]; then
  exit 0
fi

as_root=(env DEBIAN_FRONTEND=noninteractive)
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "install-packages: neither root nor sudo; missing: ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo "${as_root[@]}")
fi
apt() { "${as_root[@]}" apt-get -q -y -o DPkg::Lock::Timeout=300 "$@" </dev/null; }
install_missing() { apt install --no-install-recommends "${missing[@]}"; }

echo "install-packages: ${missing[*]}"
# Lists are fetched when they do not know a package, and once more when what they point at is gone.
if apt-cache show "${missing[@]}" >/dev/null 2>&1 && install_missing; then
  exit 0
fi
apt update
install_missing

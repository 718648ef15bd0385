#!/usr/bin/env bash
# usage: scripts/make_locales.sh FOLDER LOCALE...
# Builds each locale that FOLDER lacks, such as tr_TR.UTF-8, from the sources of the package `locales`. Programs find
# them where LOCPATH names FOLDER; the machine's own locales stay as they are.
set -euo pipefail
folder=$1
shift
mkdir -p "$folder"
for locale; do
  [ -e "$folder/$locale/LC_CTYPE" ] && continue
  scratch=$(mktemp -d "$folder/making.XXXXXX")
  trap 'rm -rf "$scratch"' EXIT
  localedef --no-archive -i "${locale%%.*}" -f "${locale#*.}" "$scratch/$locale"
  mv -T "$scratch/$locale" "$folder/$locale"
  rm -rf "$scratch"
done

#!/usr/bin/env bash
# usage: scripts/check_symbols.sh LIBRARY.so
# What a shared build shows: the exported symbols by name, beside them the namespace alone, and a SONAME with a version.
set -euo pipefail
library=${1:?usage: scripts/check_symbols.sh LIBRARY.so}
symbols=$(nm --dynamic --defined-only --demangle "$library" | cut -d' ' -f3- | sort -u)
status=0
for wanted in QuorvelVersionString QuorvelVersionNumber 'quorvel::QVStringTimeIntervalInSeconds(double)'; do
  grep -qxF "$wanted" <<<"$symbols" || { echo "$library: $wanted is not exported"; status=1; }
done
if strange=$(grep -vE '^(QuorvelVersion(String|Number)|((typeinfo|typeinfo name|vtable) for )?quorvel::.*)$' <<<"$symbols"); then
  echo "$library: exports what is not ours:"
  head -20 <<<"$strange"
  status=1
fi
# Read whole first: a grep that ends at its match would break the pipe, and the pipe's status with it.
headers=$(objdump -p "$library")
grep -qE 'SONAME +libquorvel\.so\.[0-9]+\.[0-9]+$' <<<"$headers" || { echo "$library: no versioned SONAME"; status=1; }
exit "$status"

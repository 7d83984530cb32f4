#!/usr/bin/env bash
# Compares the ABI of a built libquorel with abi/libquorel.abi, the ABI of the
# released library, so that a change which breaks rule modules or hosts built
# against the released headers cannot keep the SONAME.
#
#   tools/check_abi.sh BUILD_DIR            check (exit 1 on an unannounced break)
#   tools/check_abi.sh --update BUILD_DIR   record the built library as released
#
# A break is announced by raising QUOREL_SOVERSION in quorel/CMakeLists.txt
# and recording the new ABI with --update in the same change.
set -euo pipefail
cd "$(dirname "$0")/.."

update=false
if [ "${1:-}" = --update ]; then
  update=true
  shift
fi
build=${1:?usage: tools/check_abi.sh [--update] BUILD_DIR}
recorded=abi/libquorel.abi

library=$(readlink -f "$build/quorel/libquorel.so")
soname() { sed -n 's/.*Library soname: \[\(.*\)\]/\1/p'; }
built_soname=$(readelf -d "$library" | soname)

# Only what the installed headers declare is ABI; the file names of
# locations, not their paths, so that the record does not depend on the
# checkout.
describe() {
  abidw --headers-dir quorel --drop-private-types --no-corpus-path --no-comp-dir-path --short-locs \
    --out-file "$1" "$library"
}

if $update; then
  describe "$recorded"
  echo "recorded the ABI of $built_soname in $recorded"
  exit 0
fi

recorded_soname=$(sed -n 's/.*soname=.\([^"'"'"']*\).*/\1/p' "$recorded" | head -n 1)
if [ "$recorded_soname" != "$built_soname" ]; then
  echo "ABI: the library's SONAME is $built_soname, but $recorded describes $recorded_soname."
  echo "Record the new ABI with: tools/check_abi.sh --update $build"
  exit 1
fi

current=$(mktemp)
report=$(mktemp)
trap 'rm -f "$current" "$report"' EXIT
describe "$current"
# abidiff's status is a bit field: 1 error, 2 usage, 4 change, 8 incompatible
# change. It counts a changed layout of a class as a mere change, so the
# comparison leaves added functions out and takes any change that remains as
# a break: a module may embed or derive from every class it can see.
status=0
abidiff --no-show-locs --no-added-syms "$recorded" "$current" >"$report" || status=$?
if (( status & 3 )); then
  cat "$report"
  echo "ABI: abidiff failed (status $status)"
  exit 1
fi
if (( status & 12 )); then
  cat "$report"
  echo "ABI: the change above breaks modules and hosts built against $built_soname."
  echo "Raise QUOREL_SOVERSION in quorel/CMakeLists.txt and record the ABI with: tools/check_abi.sh --update $build"
  exit 1
fi
if abidiff --no-show-locs "$recorded" "$current" >/dev/null; then
  echo "ABI of $built_soname: unchanged"
else
  echo "ABI of $built_soname: compatible additions only (record them with tools/check_abi.sh --update $build)"
fi

#!/bin/bash
# Writes the time that all files of the package carry, in seconds, when it is another than before:
# SOURCE_DATE_EPOCH, else that of the last commit, else the first that a zip file can tell.
# usage: cmake/package/date.sh FILE
set -eu
root=$(cd -- "$(dirname -- "$0")/../.." && pwd -P)
date=${SOURCE_DATE_EPOCH:-}
if [ -z "$date" ]; then
    date=$(git -c safe.directory="$root" -C "$root" log -1 --format=%ct 2>/dev/null) || date=315532800
fi
[ -f "$1" ] && [ "$(cat "$1")" = "$date" ] || echo "$date" >"$1"

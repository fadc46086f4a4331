#!/bin/bash
# Runs clang-tidy over the cross-compiled folders; findings go to stdout, exit code 1 if any.
# usage: cmake/clang-tidy.sh BUILD-FOLDER [PATH-REGEX...]
#
# clang reads the headers of the cross compiler, but its own intrinsics in place of GCC's.
set -eu
build=$1
shift
root=$(cd -- "$(dirname -- "$0")/.." && pwd -P)
[ $# -gt 0 ] || set -- "^$(sed 's/[][\\.*^$+?(){}|]/\\&/g' <<<"$root")/(src|simulator|tools|bench)/.*\.cpp$"

mapfile -t folders < <(i686-w64-mingw32-g++-posix -xc++ -E -v - </dev/null 2>&1 |
    sed -n '/^#include <...> search/,/^End of search/s/^ //p' | grep -vE '/12-posix/include(-fixed)?$')
options=(-extra-arg=--target=i686-w64-windows-gnu -extra-arg=-nostdinc -extra-arg=-nostdinc++
    -extra-arg=-Wno-error)
for folder in "${folders[@]}" "$(clang -print-resource-dir)/include"; do
    options+=("-extra-arg=-isystem$folder")
done
# Its own progress lines and "N warnings generated" (from system headers) tell nothing, but that
# there is none tells of a pattern that fits no file.
set -o pipefail
run-clang-tidy -quiet -j2 -p "$build" "${options[@]}" "$@" 2>&1 | awk '
    { gsub(/\033\[[0-9;]*m/, "") }
    /^clang-tidy/ { files++; next }
    /^[0-9]+ (warnings?|errors?) / || /^Enabled checks/ || /^ +[a-z]+-/ || /^$/ { next }
    { print }
    END { if (!files) { print "clang-tidy: no file fits the pattern"; exit 1 } }'

#!/bin/bash
# Builds the package of the last commit twice from nothing, in two folders, with another cache, time
# zone and language, and compares the bytes. It takes as long as two whole builds.
# usage: cmake/package/check-reproducible.sh
set -eu
root=$(cd -- "$(dirname -- "$0")/../.." && pwd -P)
cache=${QOR_CACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/qor-control-facade}
commit=$(git -c safe.directory="$root" -C "$root" rev-parse HEAD)
temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# build NAME VARIABLE=VALUE...: prints nothing but errors; its output is in $temp/NAME.log.
build() {
    local name=$1
    shift
    git clone -q --no-local --no-checkout "$root" "$temp/$name"
    git -C "$temp/$name" checkout -q --detach "$commit"
    env CCACHE_DISABLE=1 "$@" "$temp/$name/run" package >"$temp/$name.log" 2>&1 || {
        tail -n 25 "$temp/$name.log" >&2
        exit 1
    }
}

build a TZ=UTC LC_ALL=C.UTF-8
cp -r "$cache" "$temp/another cache"
build "another folder" TZ=Asia/Kolkata LC_ALL=C QOR_CACHE_DIR="$temp/another cache"

status=0
for zip in "$temp"/a/out/package/*.zip; do
    other="$temp/another folder/out/package/${zip##*/}"
    if cmp -s "$zip" "$other"; then
        echo "$(sha256sum <"$zip" | cut -d' ' -f1)  ${zip##*/}: the same bytes twice"
    else
        status=1
        echo "${zip##*/}: differs in" >&2
        diff <(unzip -v "$zip") <(unzip -v "$other") | grep '^[<>]' >&2 || true
    fi
done
exit "$status"

#!/bin/bash
# Gets the sources of a Debian source package into a cache outside the tree and prints their folder.
# usage: cmake/fetch-source.sh PACKAGE
#
# The cache is $QOR_CACHE_DIR, by default ~/.cache/qor-control-facade. apt checks the signatures with
# the system's keys; the system's own apt sources and lists stay untouched. A package that is in the
# cache already costs neither network nor time.
set -u

die() { echo "fetch-source: $*" >&2; exit 1; }

# The upstream versions this project is built and tested with.
case ${1:-} in
    mbedtls) series=2.28 ;;
    benchmark) series=1.7 ;;
    cpp-httplib) series=0.11 ;;
    *) die "usage: fetch-source.sh mbedtls|benchmark|cpp-httplib" ;;
esac
package=$1

cache=${QOR_CACHE_DIR:-${XDG_CACHE_HOME:-${HOME:?fetch-source: HOME is not set}/.cache}/qor-control-facade}
target=$cache/$package-$series
if [ -f "$target/CMakeLists.txt" ]; then
    echo "$target"
    exit 0
fi

mkdir -p "$cache" || die "cannot make the cache folder $cache (set QOR_CACHE_DIR to another one)"
work=$(mktemp -d "$cache/.fetch-XXXXXX") || die "cannot write to the cache folder $cache"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
log=$work/log
mkdir -p "$work/lists/partial" "$work/archives/partial"

# The system's own mirror, asked for sources. indextargets does not tell the key ring, hence by name.
keyring=/usr/share/keyrings/debian-archive-keyring.gpg
signedBy=""
[ -r "$keyring" ] && signedBy="[signed-by=$keyring] "
apt-get indextargets --format "deb-src $signedBy\$(REPO_URI) \$(RELEASE) \$(COMPONENT)" \
    'Created-By: Packages' 2>/dev/null | grep -E ' bookworm main$' | sort -u | head -n1 > "$work/sources.list"
[ -s "$work/sources.list" ] ||
    die "no 'bookworm main' in the system's apt sources - add it and run 'apt-get update' as root"

options=(-o Dir::Etc::SourceList="$work/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o Dir::State::Lists="$work/lists" -o Dir::Cache="$work"
    -o APT::Get::List-Cleanup=0 -o Debug::NoLocking=1 -o "APT::Sandbox::User=$(id -un)"
    -o Acquire::Retries=2 -o Acquire::http::Timeout=30)
fetch() {
    cd "$work" && apt-get "${options[@]}" -qq -o APT::Update::Error-Mode=any update &&
        apt-get "${options[@]}" -qq source --only-source --download-only "$package" &&
        dpkg-source -x --no-copy ./*.dsc "$work/tree"
}
if ! (fetch) >"$log" 2>&1; then
    reason=$(grep -E '^(E:|dpkg-source: error)' "$log" | head -n1)
    die "cannot get the Debian source package '$package' - check the network, try again (${reason:-no reason given})"
fi
case $(sed -n 's/^Version: *//p' "$work"/*.dsc | head -n1) in
    "$series".*) ;;
    *) die "Debian's '$package' is no longer version $series" ;;
esac

# Another run may have been quicker; its sources are as good as ours.
mv -T "$work/tree" "$target" 2>/dev/null || [ -f "$target/CMakeLists.txt" ] ||
    die "cannot move the sources to $target"
echo "$target"

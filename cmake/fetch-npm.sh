#!/bin/bash
# Gets one npm package into a cache outside the tree and prints its folder.
# usage: cmake/fetch-npm.sh PACKAGE
#
# The cache is $QOR_CACHE_DIR, by default ~/.cache/qor-control-facade. npm fetches as it is configured
# on this machine; what it brings must be the very file that this project was built and tested with.
# A package that is in the cache already costs neither network nor time.
set -u

die() { echo "fetch-npm: $*" >&2; exit 1; }

# Version, SHA-512 of the packed file, and a file without which it is of no use.
case ${1:-} in
    uplot)
        version=1.6.32
        sum=2883159c6ebccefbb95d751b0b82d010f9e1c0ec41b8bc96d401eda66e882935
        sum+=c89a46cb824332fa369b8cb8122cc6ac36e186cd09bf7a9ded3a4c93c6989023
        wanted=dist/uPlot.iife.min.js
        ;;
    node-win-x86)
        version=22.23.2
        sum=2822050a2e6ba744a5c782280fd7e52b29e101fbc6365a1eabfb25971fffa86b
        sum+=8a674f5a4afaec7de8d1f2944f712e0e6eff6631c545029619c4121d82d70bc4
        wanted=bin/node.exe
        ;;
    koffi)
        version=3.3.4
        sum=df556bf8b33ec35744b0d70e26d256bd8c944e355cfd258ec4d0d92717e1b010
        sum+=baa99e58567f7c9f9c75a016c3ab9b24c426d60f8481c89a4d9aaeb77ef83d03
        wanted=index.js
        ;;
    @koromix/koffi-win32-ia32)
        version=3.3.4
        sum=cf4b98de6a970135355fb832909c9d738a6a7b1b20fbe6accba5ee17077995ce
        sum+=c181d31e80c0a6eb404eb5cef7128373fec8265776d7e5b11a35532d23fbb934
        wanted=win32_ia32/koffi.node
        ;;
    *) die "usage: fetch-npm.sh uplot|node-win-x86|koffi|@koromix/koffi-win32-ia32" ;;
esac
package=$1
file=${package#@}
file=${file//\//-}-$version

cache=${QOR_CACHE_DIR:-${XDG_CACHE_HOME:-${HOME:?fetch-npm: HOME is not set}/.cache}/qor-control-facade}
target=$cache/$file
if [ -f "$target/$wanted" ]; then
    echo "$target"
    exit 0
fi

command -v npm >/dev/null || die "there is no 'npm' - run cmake/install-packages.sh build as root"
mkdir -p "$cache" || die "cannot make the cache folder $cache (set QOR_CACHE_DIR to another one)"
work=$(mktemp -d "$cache/.fetch-XXXXXX") || die "cannot write to the cache folder $cache"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
log=$work/log

# npm's own cache and log files stay in the working folder, too.
if ! (cd "$work" && npm pack "$package@$version" --cache "$work/npm") </dev/null >"$log" 2>&1; then
    reason=$(grep -Ei '^npm err(or|!)' "$log" | grep -v 'complete log' | head -n1)
    die "cannot get the npm package '$package' - check the network, try again (${reason:-no reason given})"
fi
packed=$work/$file.tgz
[ -f "$packed" ] || die "npm has not left $file.tgz"
echo "$sum  $packed" | sha512sum --check --status ||
    die "the npm package '$package' $version is not the one this project was tested with (SHA-512 differs)"
mkdir "$work/tree" && tar -xzf "$packed" -C "$work/tree" --strip-components=1 --no-same-owner ||
    die "cannot unpack $file.tgz"
[ -f "$work/tree/$wanted" ] || die "the npm package '$package' has no $wanted"

# Another run may have been quicker; its files are as good as ours.
mv -T "$work/tree" "$target" 2>/dev/null || [ -f "$target/$wanted" ] ||
    die "cannot move the package to $target"
echo "$target"

#!/bin/sh
# Puts Node.js for 32-bit Windows and koffi into a folder: node.exe and node_modules.
# usage: node-folder.sh FOLDER
#
# None of the packages' own scripts is run, so koffi finds its binary only where npm would put it.
set -eu
folder=$1
fetch=$(dirname -- "$0")/../../cmake/fetch-npm.sh
node=$("$fetch" node-win-x86)
koffi=$("$fetch" koffi)
binary=$("$fetch" @koromix/koffi-win32-ia32)

rm -rf "$folder"
mkdir -p "$folder/node_modules/@koromix"
cp -r "$koffi" "$folder/node_modules/koffi"
cp -r "$binary" "$folder/node_modules/@koromix/koffi-win32-ia32"
cp "$node/bin/node.exe" "$folder/node.exe.new"
mv "$folder/node.exe.new" "$folder/node.exe"

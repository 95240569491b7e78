#!/bin/sh
# installed_test.sh PACKAGE DIRECTORY: packs the folder, installs the file in an empty project and runs the tests on it.
# SPDX-License-Identifier: MIT
set -eu
rm -rf "$2"
mkdir -p "$2"
cd "$2"
file=$(npm pack --silent "$1")
echo '{ "private": true }' >package.json
npm install --silent --offline --no-audit --no-fund "./$file"
size=$(gzip -9 -c node_modules/nuv1math/*.mjs node_modules/nuv1math/nuv1math-vectors.wasm | wc -c)
[ "$size" -le 60000 ] || { echo "a page would load $size bytes, more than 60000" >&2; exit 1; }
NUV_PACKAGE="$2/node_modules/nuv1math/nuv1math.mjs" node --test "$(dirname "$0")/test.mjs"

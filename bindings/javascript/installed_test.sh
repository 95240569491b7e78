#!/bin/sh
# installed_test.sh PACKAGE DIRECTORY: packs the folder, installs the file in an empty project and runs the tests on it.
# SPDX-License-Identifier: MIT
set -eu
here=$(dirname "$0")
rm -rf "$2"
mkdir -p "$2"
cd "$2"
file=$("$NUV_NPM" pack --silent "$1")
size=$(wc -c <"$file")
echo "the packed package has $size bytes"
[ "$size" -le 60000 ] || { echo "these are more than 60000" >&2; exit 1; }
echo '{ "private": true }' >package.json
"$NUV_NPM" install --silent --offline --no-audit --no-fund "./$file"
NUV_PACKAGE="$2/node_modules/nuv1math/nuv1math.mjs" node --test "$here/test.mjs"

# expect_digits PROGRAM: it prints the bits that all languages print.
expect_digits() {
    bits=$(node "$1")
    [ "$bits" = "$NUV_EXPECTED_BITS" ] || { echo "$1 printed $bits" >&2; exit 1; }
}

# The program of the page, and one with types.
cp "$here/examples/fit.mjs" "$here/types_test.mts" .
"$NUV_TSC" --strict --noUnusedLocals --module node16 --target es2022 --lib es2022 types_test.mts
expect_digits ./fit.mjs
expect_digits ./types_test.mjs

#!/usr/bin/env bash
# clean_root.sh: installs, uses, removes and purges the Debian packages. Runs as root in a Debian that is thrown away.
# SPDX-License-Identifier: MIT
#
# scripts/check packages makes that Debian. It holds the packages in /opt/try/packages and the sources in /opt/try/tree.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8

cd /opt/try
names=(libnuv1math1 libnuv1math-c1 libnuv1math-dev python3-nuv1math nuv1math-tools nuv1math-doc)
consumers=tree/tests/consumers

# expect TEXT COMMAND...: the command succeeds and prints this text in a line.
expect() {
    local text=$1 printed
    shift
    if ! printed=$("$@" 2>&1) || ! grep -qF -- "$text" <<<"$printed"; then
        printf '%s\nclean_root.sh: this failed, or did not print "%s": %s\n' "$printed" "$text" "$*" >&2
        exit 1
    fi
    echo "$*: $text"
}

# expect_nothing COMMAND...: the command prints nothing that has the name of the library.
expect_nothing() {
    ! "$@" 2>&1 | grep nuv1math || {
        echo "clean_root.sh: something of nuv1math is left: $*" >&2
        exit 1
    }
}

# Installed: every file is there, also those that other systems leave out of a minimal root.
rm -f /etc/dpkg/dpkg.cfg.d/*
apt-get -q install -y --no-install-recommends ./packages/*.deb >/dev/null
expect_nothing dpkg -V "${names[@]}"
expect libnuv1math.so.1 ldconfig -p
expect libnuv1math_c.so.1 ldconfig -p

# Used.
# shellcheck disable=SC2046 # the words of pkg-config are options
g++ "$consumers/consumer.cpp" $(pkg-config --cflags --libs nuv1math) -o used
expect ok ./used
expect libnuv1math.so.1 ldd used
digits=$(cat tree/bindings/c/examples/fit.txt)
# shellcheck disable=SC2046 # the words of pkg-config are options
gcc -std=c89 -pedantic -Wall -Wextra -Werror tree/bindings/c/examples/fit.c \
    $(pkg-config --cflags --libs nuv1math_c) -o used_by_c
expect "$digits" ./used_by_c
gcc tree/bindings/c/examples/fit.c -lnuv1math_c -o used_by_c
expect "$digits" ./used_by_c
for language in CXX C; do
    cmake -DLANGUAGE=$language -S "$consumers/found" -B found-$language >/dev/null
    cmake --build found-$language >/dev/null
done
expect ok found-CXX/consumer
expect "$digits" found-C/consumer
expect "$digits" python3 tree/bindings/python/examples/fit.py
expect conformal python3 -c 'import nuv1math; print(nuv1math.fit([[0, 0], [1, 0]], [[5, 3], [7, 3]]))'
expect 'fitpoints 1' fitpoints --version
expect 'degrees of freedom' fitpoints tree/apps/fitpoints/sample.csv
expect 'index.html' ls "$(sed -n 's/^Index: //p' /usr/share/doc-base/nuv1math-doc.nuv1math)"
expect 'fitpoints.1.gz' ls /usr/share/man/man1
# dpkg-shlibdeps is not here; what it reads is.
expect 'libnuv1math 1 libnuv1math1' cat /var/lib/dpkg/info/libnuv1math1:*.shlibs
expect 'libnuv1math_c 1 libnuv1math-c1' cat /var/lib/dpkg/info/libnuv1math-c1:*.shlibs

# Removed and purged: nothing is left, and the loader has forgotten the library.
apt-get -q remove -y "${names[@]}" >/dev/null
dpkg --purge "${names[@]}" >/dev/null 2>&1
expect_nothing dpkg -l
expect_nothing ldconfig -p
expect_nothing find / -xdev -path /opt/try -prune -o -path /proc -prune -o -name '*nuv1math*' -print

# Without packages, by the commands of README.md for the whole system.
sudo() { "$@"; }
cp "$consumers/consumer.cpp" tree/program.cpp
commands=$(awk '/^```/ { if (block ~ /sudo cmake --install/) printf "%s", block; block = ""; next }
    { block = block $0 "\n" }' tree/README.md)
(cd tree && eval "$commands" >/dev/null)
expect ok tree/program

# require.sh: sourced by the other scripts; installs the Debian packages that they need.
# SPDX-License-Identifier: MIT

# require PACKAGE...: installs those that are missing, saying which. Without the rights it names them and stops.
require() {
    local missing=() package
    if ! command -v dpkg-query >/dev/null; then
        echo "$0: not a Debian system; going on as if these were installed: $*" >&2
        return
    fi
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0

    local run=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! sudo -n true 2>/dev/null; then
            echo "$0: these Debian packages are missing, and installing them needs root: ${missing[*]}" >&2
            exit 1
        fi
        run=(sudo -n)
    fi
    echo "$0: installing ${missing[*]}" >&2
    local install=("${run[@]}" env DEBIAN_FRONTEND=noninteractive
                   apt-get install -y -q --no-install-recommends "${missing[@]}")
    # The package lists may be absent or too old: then they are fetched, and it is tried once more.
    "${install[@]}" >/dev/null 2>&1 || { "${run[@]}" apt-get update -q >&2 && "${install[@]}" >&2; } || {
        echo "$0: could not install: ${missing[*]}" >&2
        exit 1
    }
}

# What building the library and its examples takes.
build_packages=(g++ cmake ninja-build libcli11-dev libcsv-dev nlohmann-json3-dev gnuplot-nox)

# What the native tests take beside that.
test_packages=("${build_packages[@]}" clang binutils python3 python3-mpmath libgtest-dev libgmock-dev librapidcheck-dev
               libeigen3-dev libmpfr-dev libboost-dev abigail-tools ccache)

# build.sh: sourced by the commands, in the root of the repository. Installs Debian packages and builds presets.
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# Packages of each preset: what configuring, building and testing it takes.
tools='cmake ninja-build ccache'
native="$tools g++"
native_tests="$native python3 llvm libgtest-dev libgmock-dev librapidcheck-dev libeigen3-dev"
cross_tests="$tools python3 llvm binutils googletest libeigen3-dev"
armel='g++ g++-arm-linux-gnueabi libc6-dev-armel-cross qemu-user' # g++ for the emulator's plugin
site='python3 doxygen nodejs katex'
fitpoints='libcli11-dev libfast-float-dev nlohmann-json3-dev gnuplot-nox fonts-unifont help2man man-db'
fitpoints_tests='gdal-bin proj-bin'
python='python3-dev python3-cffi python3-numpy python3-setuptools python3-wheel python3-pip python3-venv'
python_tests='python3-pytest python3-hypothesis python3-numpydoc mypy python3-matplotlib python3-skimage'
browser='chromium chromium-driver fonts-dejavu-core python3-pytest python3-selenium'
npm=$(command -v npm >/dev/null || echo npm) # a nodejs that is not Debian's has its own npm and conflicts with this one
mingw='g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix'
declare -A packages=(
    [fit]="$native $fitpoints"
    [site]="$native $site"
    [default]="$native_tests $fitpoints $fitpoints_tests $site clang clang-format-14 abigail-tools python3-mpmath gappa
               libmpfr-dev libboost-dev mono-mcs mono-runtime fp-compiler $python $python_tests"
    [linux-gcc-cxx20]="$native_tests clang abigail-tools"
    [linux-clang]="$native_tests clang"
    [linux-clang-cxx20]="$native_tests clang"
    [linux-sanitize]="$native_tests $fitpoints $fitpoints_tests"
    [linux-thread]="$native_tests"
    [linux-armel]="$cross_tests $armel"
    [linux-arm64]="$cross_tests g++-aarch64-linux-gnu qemu-user"
    [windows-x64]="$cross_tests g++-mingw-w64-x86-64-posix wine wine64 xvfb xauth"
    [windows-x86]="$cross_tests g++-mingw-w64-i686-posix"
    [wince-armv4]="$cross_tests $armel clang"
    [consumers]="$native make python3 pkgconf meson clang lld llvm $mingw wine wine64 gcc-arm-none-eabi"
    [wasm]="$tools python3 googletest libeigen3-dev clang lld llvm binaryen nodejs $npm node-typescript wasi-libc
            g++ libcli11-dev libfast-float-dev nlohmann-json3-dev
            libclang-rt-14-dev-wasm32 libc++-14-dev-wasm32 libc++abi-14-dev-wasm32 $browser"
    [package-linux]="$native $fitpoints $site"
    [package-deb]="$native $fitpoints $site $python dpkg-dev file"
    [package-windows-x64]="$tools $site zip llvm g++-mingw-w64-x86-64-posix"
    [package-windows-x86]="$tools $site zip llvm g++-mingw-w64-i686-posix"
    [package-wince-armv4]="$tools zip python3 binutils $armel clang"
    [coverage]="$native_tests"
    [fuzz]="$native $fitpoints libeigen3-dev clang libclang-common-14-dev libclang-rt-14-dev llvm xz-utils"
    [bench]="$native python3 libbenchmark-dev libeigen3-dev libopencv-calib3d-dev libopencv-imgproc-dev
             libopencv-core-dev libgdal-dev libgsl-dev libdlib-dev libvigraimpex-dev libboost-dev liblapack-dev
             libblas-dev liblapack3 libblas3 libopenblas0-serial"
)

# require PACKAGE...: installs the Debian packages that are missing. Fails if it has not the rights to do so.
require() {
    local missing=() package
    if ! command -v dpkg-query >/dev/null; then
        echo "$0: not a Debian system; assuming that these are installed: $*" >&2
        return
    fi
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! sudo -n true 2>/dev/null; then
            echo "$0: these Debian packages are missing, and installing them needs root: ${missing[*]}" >&2
            exit 1
        fi
        as_root=(sudo -n)
    fi
    echo "$0: installing ${missing[*]}" >&2
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=600)
    local install=("${apt[@]}" install -y --no-install-recommends "${missing[@]}")
    # The first try fails where the package lists are absent or too old. Fetch them and try again.
    "${install[@]}" >/dev/null 2>&1 || { "${apt[@]}" update >&2 && "${install[@]}" >&2; } || {
        echo "$0: could not install: ${missing[*]}" >&2
        exit 1
    }
}

# require_for PRESET...: installs what these presets need.
require_for() {
    local preset
    # shellcheck disable=SC2046 # splits the lists into names
    require $(for preset in "$@"; do echo "${packages[$preset]}"; done | tr -s ' ' '\n' | sort -u)
}

# build PRESET [TARGET...]: configures a preset and builds the targets given, or those that the preset builds. Objects
# that another preset compiled with the same options come from the compiler cache.
build() {
    local preset=$1
    shift
    cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}
}
export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
export CCACHE_DIR=${CCACHE_DIR-$PWD/build/ccache} CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1

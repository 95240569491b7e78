# platforms.sh: sourced by scripts/test; builds and tests the platforms and sums up what they did.
# SPDX-License-Identifier: MIT

native_platforms=(default linux-sanitize)
platforms=(linux-gcc linux-gcc-cxx20 linux-clang linux-clang-cxx20 linux-thread linux-armel linux-arm64 windows-x64
           windows-x86 wince-armv4)
platform_packages=(googletest qemu-user g++-arm-linux-gnueabi g++-aarch64-linux-gnu g++-mingw-w64-x86-64-posix
                   g++-mingw-w64-i686-posix wine wine64 xvfb xauth
                   libc6-dev-armel-cross llvm-14)

# run_platform NAME: configures, builds and tests it; a display of its own serves the message boxes of Windows.
run_platform() {
    local show=()
    [ "$1" != windows-x64 ] || show=(xvfb-run -a)
    cmake --preset "$1" &&
        cmake --build --preset "$1" &&
        "${show[@]}" ctest --preset "$1" -j "$(nproc)" --output-junit "$PWD/build/$1/tests.xml"
}

# summary NAME SECONDS RESULT: how it ended, how many tests ran, failed and were left out, the digests of exact results,
# and the greatest errors of the others in units in the last place.
summary() {
    local head='' digest=- ulps=-
    # The head of the report: attributes of its first element.
    [ ! -f "build/$1/tests.xml" ] || head=$(sed -n '/<testsuite/,/>/p' "build/$1/tests.xml" | tr '\n\t' '  ')
    [ ! -f "build/$1/digest.txt" ] || digest=$(sed -n 's/^digest.*: //p' "build/$1/digest.txt" | paste -sd';' | sed 's/;/; /')
    [ ! -f "build/$1/ulps.txt" ] || ulps=$(sed -n 's/^ulps: //p' "build/$1/ulps.txt" | paste -sd';' | sed 's/;/; /g')
    count() { { grep -o " $1=\"[0-9]*\"" <<<"$head" | tr -cd '0-9'; } || true; }
    local tests failed skipped
    tests=$(count tests) failed=$(count failures) skipped=$(count skipped)
    printf '%-18s %-6s %4s tests run, %s failed, %s skipped, %s s\n    digest %s\n    ulps   %s\n' "$1" "$3" \
        "$((${tests:-0} - ${skipped:-0}))" "${failed:--}" "${skipped:--}" "$2" "$digest" "$ulps"
}

# run_platforms NAME...: runs each, also after one that failed; fails if one did.
run_platforms() {
    local platform start result failed=0 lines=()
    for platform in "$@"; do
        rm -f "build/$platform/tests.xml" "build/$platform/digest.txt" "build/$platform/ulps.txt"
        start=$SECONDS result=passed
        run_platform "$platform" || { result=FAILED failed=1; }
        lines+=("$(summary "$platform" $((SECONDS - start)) $result)")
    done
    printf '\n'
    printf '%s\n' "${lines[@]}"
    return $failed
}

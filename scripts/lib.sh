# Set-up shared by the scripts: tools that are there are used as they are; what is missing comes from apt-get, once.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
jobs=${ZETPXL_JOBS:-$(nproc)}

say() { printf '== %s\n' "$*"; }

wrong_use() {
    printf '%s\n' "$*" >&2
    exit 2
}

failed() {
    printf '%s\n' "$*" >&2
    exit 1
}

run() {
    printf '+ %s\n' "$*"
    "$@"
}

have() { command -v "$1" >/dev/null 2>&1; }

# What each package is asked for: its test answers whether it is there already.
have_compiler() { have g++ && have gcc; }
have_header() { printf '#include <%s>\n' "$1" | g++ -x c++ -fsyntax-only - 2>/dev/null; }
# The name under which ImageMagick's converter is there.
find_magick() {
    local program
    for program in convert-im6.q16 magick convert; do
        if have "$program" && "$program" -version 2>/dev/null | grep -q ImageMagick; then echo "$program" && return 0; fi
    done
    return 1
}

is_there() {
    case $1 in
        g++) have_compiler ;;
        cmake) have cmake && cmake --version | awk 'NR == 1 { split($3, v, "."); exit !(v[1] > 3 || v[2] >= 25) }' ;;
        ninja-build) have ninja ;;
        libpng-dev) have_header png.h ;;
        libtiff-dev) have_header tiffio.h ;;
        libgtest-dev) have_header gtest/gtest.h ;;
        libgmock-dev) have_header gmock/gmock.h ;;
        libbenchmark-dev) have_header benchmark/benchmark.h ;;
        imagemagick) find_magick >/dev/null ;;
        fonts-dejavu-core) [ -r /usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf ] ;;
        pkg-config) have pkg-config || have pkgconf ;;
        libclang-rt-16-dev) have clang-16 && [ -n "$(find "$(clang-16 -print-resource-dir)" -name 'libclang_rt.fuzzer*' 2>/dev/null | head -n 1)" ] ;;
        *) have "$1" ;;
    esac
}

as_root() {
    if [ "$(id -u)" = 0 ]; then run "$@"; else run sudo "$@"; fi
}

install_packages() {
    local list="$*"
    have apt-get || failed "These are missing and there is no apt-get to fetch them: $list"
    [ "$(id -u)" = 0 ] || have sudo || failed "These are missing, and fetching them needs root or sudo: $list"
    say "Fetching $list"
    as_root apt-get update -qq || failed "apt-get update failed; these are missing: $list"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" ||
        failed "apt-get could not install: $list"
}

# need PACKAGE...: fetches those that are not there.
need() {
    local package missing=()
    for package in "$@"; do
        is_there "$package" || missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] || install_packages "${missing[@]}"
}

# build PRESET "PARTS" [-DNAME=VALUE...] [--target NAME]: configures and builds a preset. PARTS are of TESTS, TOOLS and
# BENCH; what an earlier run has added to the tree stays, for leaving it out would have it built again next time.
build() {
    local preset=$1 parts=$2 part
    shift 2
    local configure=() make=()
    for part in TESTS TOOLS BENCH; do
        case " $parts " in
            *" $part "*) configure+=("-DZETPXL_BUILD_$part=ON") ;;
            *) [ -e "build/$preset/CMakeCache.txt" ] || configure+=("-DZETPXL_BUILD_$part=OFF") ;;
        esac
    done
    if have ccache; then configure+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
    while [ $# -gt 0 ]; do
        case $1 in
            -D*) configure+=("$1") ;;
            *) make+=("$1") ;;
        esac
        shift
    done
    say "Building preset $preset"
    run cmake --preset "$preset" "${configure[@]}" || failed "Preset $preset could not be configured"
    run cmake --build --preset "$preset" -j "$jobs" "${make[@]}" || failed "Preset $preset could not be built"
}

log() {
    mkdir -p build/logs
    printf 'build/logs/%s.log' "$1"
}

# Can this machine run code of a level, such as x86-64-v3? The loader, which picks the library, is who knows.
has_level() {
    local loader
    for loader in /lib64/ld-linux-x86-64.so.2 /lib/ld-linux-x86-64.so.2; do
        if [ -x "$loader" ]; then "$loader" --help 2>/dev/null | grep "$1 (supported" >/dev/null && return 0; fi
    done
    return 1
}

# The highest level that the library is built for and this machine runs; empty for the baseline.
best_level() {
    local level
    for level in x86-64-v4 x86-64-v3; do
        if has_level "$level"; then echo "$level" && return 0; fi
    done
}

# Presets whose tests link a level that this machine runs, the lowest last.
level_presets() {
    if has_level x86-64-v4; then echo v4; fi
    if has_level x86-64-v3; then echo release; fi
    echo baseline
}

# shellcheck shell=bash
# What ./run, ./test and .ci/run share. Sourced; sets `top` to the checkout's top folder.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"

say() { printf '%s\n' "$*" >&2; }

fail() {
    say "fernhollow: $*"
    exit 1
}

# The packages of the given groups, one a line.
packages_of() {
    awk -v groups=" $* " '!/^#/ && NF && index(groups, " " $1 " ") { print $2 }' scripts/packages.txt | sort -u
}

# Those of the given groups that are not installed.
missing_packages() {
    local wanted
    mapfile -t wanted < <(packages_of "$@")
    # dpkg-query complains about a package that it never heard of; for us that is simply one more to install.
    comm -23 <(printf '%s\n' "${wanted[@]}") <(
        { dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true; } |
            awk '$1 == "installed" { print $2 }' | sort -u
    )
}

# Installs what the given groups lack. Asks the network nothing when nothing is missing.
ensure_packages() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "Not a Debian system, nothing is installed; scripts/packages.txt lists what is needed."
        return
    fi
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -gt 0 ] || return 0

    local root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "packages are missing and there is neither root nor sudo to install them; ask an administrator for: apt-get install ${missing[*]}"
        root=(sudo)
        [ -t 0 ] || root+=(-n)
    fi
    mkdir -p build
    say "Installing ${#missing[@]} Debian packages (log: build/packages.log): ${missing[*]}"
    local apt=("${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300)
    if ! { "${apt[@]}" update && "${apt[@]}" install --no-install-recommends "${missing[@]}"; } \
        >build/packages.log 2>&1 </dev/null; then
        grep -E '^(E:|sudo:)' build/packages.log >&2 || tail -n 5 build/packages.log >&2
        fail "the Debian packages could not be installed; build/packages.log says why"
    fi
}

# build PRESET [TARGET...]: configures when that is due, then builds.
build() {
    local preset=$1 folder=build/$1
    shift
    if [ ! -e "$folder/build.ninja" ] || [ CMakePresets.json -nt "$folder/build.ninja" ]; then
        mkdir -p "$folder"
        if ! cmake --preset "$preset" >"$folder/configure.log" 2>&1; then
            grep -A 12 'CMake Error' "$folder/configure.log" >&2 || tail -n 20 "$folder/configure.log" >&2
            fail "the $preset build could not be configured; $folder/configure.log says why"
        fi
    fi
    local command=(cmake --build --preset "$preset")
    [ $# -eq 0 ] || command+=(--target "$@")
    # A terminal shows one line that moves; elsewhere a line for every file would bury what matters.
    if [ -t 2 ]; then
        "${command[@]}" >&2
    else
        "${command[@]}" -- --quiet 2>&1 | { grep -v '^ninja: no work to do' || true; } >&2
    fi || fail "the $preset build failed; the compiler's messages are above"
}

# Qt wants UTF-8 for file names; a bare system starts in the C locale.
use_utf8() {
    [ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_CTYPE=C.UTF-8
}

# build_and_test PRESET [CTEST ARGUMENT...]
build_and_test() {
    local preset=$1
    shift
    build "$preset"
    use_utf8
    export LSAN_OPTIONS="suppressions=$top/scripts/lsan.supp:print_suppressions=0${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
    ctest --preset "$preset" --no-tests=error --parallel "$(nproc)" "$@"
}

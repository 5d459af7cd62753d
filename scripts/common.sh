# shellcheck shell=bash
# What ./run, ./test and .ci/run share. Sourced; sets `top` to the checkout's top folder.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"
# shellcheck source=scripts/packages.sh
. "$top/scripts/packages.sh"

say() { printf '%s\n' "$*" >&2; }

fail() {
    say "fernhollow: $*"
    exit 1
}

# Shows the "WORDS PERCENT" lines of stdin: on a terminal in one line that changes, elsewhere one line a minute.
show_progress() {
    local line shown=$SECONDS
    while read -r line; do
        if [ -t 2 ]; then
            printf '\r\033[K%s %%' "$line" >&2
        elif [ $((SECONDS - shown)) -ge 60 ]; then
            say "$line %"
            shown=$SECONDS
        fi
    done
    [ ! -t 2 ] || printf '\r\033[K' >&2
}

# configure PRESET FOLDER [-DNAME=VALUE...]: configures the build if there is none, the presets have changed
# or a setting differs.
configure() {
    local preset=$1 folder=$2 setting due=
    shift 2
    if [ ! -e "$folder/build.ninja" ] || [ CMakePresets.json -nt "$folder/build.ninja" ]; then
        due=yes
    fi
    for setting in "$@"; do
        setting=${setting#-D}
        [ -n "$due" ] || grep -qE "^${setting%%=*}:[A-Z]+=${setting#*=}$" "$folder/CMakeCache.txt" || due=yes
    done
    [ -n "$due" ] || return 0
    mkdir -p "$folder"
    if ! cmake --preset "$preset" -B "$folder" "$@" >"$folder/configure.log" 2>&1; then
        grep -A 12 'CMake Error' "$folder/configure.log" >&2 || tail -n 20 "$folder/configure.log" >&2
        fail "the $preset build could not be configured; $folder/configure.log says why"
    fi
}

# compile FOLDER [TARGET...]
compile() {
    local folder=$1 log=$1/build.log
    shift
    local command=(cmake --build "$folder")
    [ $# -eq 0 ] || command+=(--target "$@")
    if [ -t 2 ]; then
        "${command[@]}" >&2 || fail "the build in $folder failed; the compiler's messages are above"
        return
    fi
    # Without a terminal, a line for every file would bury the warnings and errors.
    if ! NINJA_STATUS='%p ' "${command[@]}" 2>&1 | tee "$log" |
        sed -nEu 's/^ *([0-9]+)% .*/Building: \1/p' | show_progress; then
        sed -n '/^FAILED/,$p' "$log" >&2
        fail "the build in $folder failed; $log has it all"
    fi
    grep -E ' (warning|error): ' "$log" >&2 || true
}

# Builds the program alone, for ./run. If ./test has configured the tests, they stay configured.
build_program() {
    local settings=()
    [ -e build/release/build.ninja ] || settings+=(-DBUILD_TESTING=OFF)
    configure release build/release "${settings[@]}"
    compile build/release fernhollow
}

# build PRESET: builds the program and its tests.
build() {
    configure "$1" "build/$1" -DBUILD_TESTING=ON
    compile "build/$1"
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

# announce GROUP...: says what a first start is going to do and about how long that takes. The seconds are for
# one core; a package's include those for its dependencies.
announce() {
    local missing=() things=() seconds=0
    ! is_debian || mapfile -t missing < <(missing_packages "$@")
    if [ ! -e build/release/fernhollow ]; then
        things+=("the program")
        seconds=120
    fi
    if [[ " $* " = *" test "* ]] && ! grep -qs '^BUILD_TESTING:BOOL=ON' build/release/CMakeCache.txt; then
        things+=("its tests")
        seconds=$((seconds + 120))
    fi
    local plan=()
    [ "${#missing[@]}" -eq 0 ] || plan+=("install ${#missing[@]} Debian packages and what they need")
    [ "${#things[@]}" -eq 0 ] || plan+=("build $(joined "${things[@]}")")
    [ "${#plan[@]}" -gt 0 ] || return 0
    local count=$(((seconds + 6 * ${#missing[@]}) / 60 / $(nproc) + 1)) about="a minute"
    [ "$count" -eq 1 ] || about="$count minutes"
    say "Fernhollow is going to $(joined "${plan[@]}"). That takes about $about; logs are in build/."
}

joined() {
    printf '%s' "$1"
    [ $# -eq 1 ] || printf ' and %s' "${@:2}"
}

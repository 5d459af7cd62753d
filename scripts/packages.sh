# shellcheck shell=bash
# Installs the Debian packages that scripts/packages.txt lists. Sourced by common.sh.
packages_log=build/packages.log

# The code name of this Debian; testing and unstable share one.
suite() {
    sed -nE 's/^VERSION_CODENAME="?([a-z]+)"?$/\1/p' /etc/os-release 2>/dev/null
}

# Prints the packages of the given groups on this suite, one a line. `test@trixie` is the group test on trixie
# alone.
packages_of() {
    local groups=() group
    for group in "$@"; do
        groups+=("$group" "$group@$(suite)")
    done
    awk -v groups=" ${groups[*]} " '!/^#/ && NF && index(groups, " " $1 " ") { print $2 }' \
        scripts/packages.txt | sort -u
}

# Prints the packages of the given groups that are not installed.
missing_packages() {
    local wanted
    mapfile -t wanted < <(packages_of "$@")
    # dpkg-query complains about a package that it does not know; that package is simply missing, too.
    comm -23 <(printf '%s\n' "${wanted[@]}") <(
        { dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true; } |
            awk '$1 == "installed" { print $2 }' | sort -u
    )
}

is_debian() {
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null
}

# Turns apt's progress reports into lines for show_progress; the rest goes to the log.
apt_progress() {
    awk -v log_file="$packages_log" -F: '
        /^dlstatus:/ { printf "Downloading packages: %d\n", $3; fflush(); next }
        /^pmstatus:/ { printf "Installing packages: %d\n", $3; fflush(); next }
        { print >>log_file; fflush(log_file) }'
}

# Installs the missing packages of the given groups. Does not use the network when none is missing.
ensure_packages() {
    if ! is_debian; then
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
    printf '\n== %s: %s\n' "$(date '+%F %T')" "${missing[*]}" >>"$packages_log"
    say "Installing (log: $packages_log): ${missing[*]}"
    local apt=("${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300 -o APT::Status-Fd=1)
    if ! { "${apt[@]}" update && "${apt[@]}" install --no-install-recommends "${missing[@]}"; } 2>&1 </dev/null |
        apt_progress | show_progress; then
        local attempt
        attempt=$(awk '/^== /{ text = "" } { text = text $0 "\n" } END { printf "%s", text }' "$packages_log")
        grep -E '^(E:|sudo:)' <<<"$attempt" >&2 || tail -n 5 <<<"$attempt" >&2
        fail "the Debian packages could not be installed; $packages_log says why"
    fi
}

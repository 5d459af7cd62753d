# shellcheck shell=bash
# Bare Debian systems to try things in: made with debootstrap in /var/tmp, deleted when the script ends. Sourced after
# common.sh. Needs root and the package debootstrap.
[ "$(id -u)" -eq 0 ] || fail "only root can make another system"
command -v debootstrap >/dev/null || fail "debootstrap is not installed (apt-get install debootstrap)"
bare_systems=()
trap 'rm -rf --one-file-system -- "${bare_systems[@]}"' EXIT

# make_system SUITE root|ana LOG: sets `system` to its folder. The user ana may use sudo.
make_system() {
    local suite=$1 user=$2 log=$3
    system=$(mktemp -d "/var/tmp/fernhollow-$suite-XXXXXX")
    bare_systems+=("$system")
    chmod 755 "$system"
    say "Making a bare $suite in $system"
    # An older debootstrap does not know a newer suite by name. All of them are made as sid is.
    debootstrap --variant=minbase "$suite" "$system" "" /usr/share/debootstrap/scripts/sid >"$log" 2>&1 ||
        fail "debootstrap failed; $log says why"
    [ "$user" = ana ] || return 0
    chroot "$system" sh -e -c 'apt-get -q update && apt-get -q -y install --no-install-recommends sudo &&
        useradd --create-home --shell /bin/bash ana && echo "ana ALL=(ALL) NOPASSWD: ALL" >/etc/sudoers.d/ana' \
        >>"$log" 2>&1 || fail "sudo could not be installed there; $log says why"
}

home_of() { [ "$1" = root ] && printf '/root\n' || printf '/home/%s\n' "$1"; }

# put_checkout SYSTEM USER: puts the last commit into the user's folder "fernhollow".
put_checkout() {
    local home
    home=$(home_of "$2")
    mkdir "$1$home/fernhollow"
    git archive HEAD | tar -x -C "$1$home/fernhollow"
    chroot "$1" chown -R --reference="$home" "$home/fernhollow"
}

# inside SYSTEM USER COMMAND: runs the command in the user's folder "fernhollow". Its mounts and processes end with
# it.
inside() {
    # shellcheck disable=SC2016
    unshare --mount --pid --fork --kill-child bash -ec '
        mount -t proc proc "$1/proc"
        mount --rbind /sys "$1/sys"
        mount --rbind /dev "$1/dev"
        mount -t tmpfs tmpfs "$1/dev/shm"
        cd "$1"
        [ "$2" = root ] && as=(env) || as=(setpriv --reuid="$2" --regid="$2" --init-groups env)
        exec chroot . "${as[@]}" -i HOME="$3" USER="$2" PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
            bash -c "cd ~/fernhollow && $4"
    ' bash "$1" "$2" "$(home_of "$2")" "$3" </dev/null
}

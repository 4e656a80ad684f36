# A bare Debian 12 root to prove things in. Sourced; needs root and debootstrap.
#
# bare_root_possible     true when this machine lets us make one, else says why and is false
# make_bare_root FOLDER  makes it below FOLDER (which must not exist)
# in_bare_root FOLDER COMMAND...   runs a command inside, with /proc and a private /dev
# remove_bare_root FOLDER

bare_root_possible() {
    if [ "$(id -u)" -ne 0 ]; then
        echo "skipped: a bare root needs the rights of root"
        return 1
    fi
    if ! command -v debootstrap >/dev/null; then
        echo "skipped: debootstrap is not installed"
        return 1
    fi
    if ! unshare --mount true 2>/dev/null; then
        echo "skipped: this machine permits no mounts"
        return 1
    fi
}

make_bare_root() {
    debootstrap --variant=minbase bookworm "$1" "${MORVANE_MIRROR:-http://deb.debian.org/debian}" >&2
    cp /etc/resolv.conf "$1/etc/resolv.conf"
    for setting in /etc/apt/apt.conf.d/*proxy*; do
        [ ! -e "$setting" ] || cp "$setting" "$1/etc/apt/apt.conf.d/"
    done
}

in_bare_root() {
    local root=$1
    shift
    # The mounts live in a namespace of their own: nothing is left behind, whatever happens.
    unshare --mount --pid --fork --kill-child -- bash -c '
        set -e
        mount --make-rprivate /
        mount -t proc proc "$0/proc"
        mount --rbind /dev "$0/dev"
        mount -t tmpfs tmpfs "$0/run"
        exec chroot "$0" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
            DEBIAN_FRONTEND=noninteractive "$@"' "$root" "$@"
}

remove_bare_root() {
    rm -rf --one-file-system "$1"
}

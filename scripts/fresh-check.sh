#!/usr/bin/env bash
# Proves that the README's set-up works on a machine that holds nothing but a
# bare Debian 12: builds such a root with mmdebstrap (minbase, plus git, sudo
# and python3), clones this repository's committed HEAD into it and runs the
# README's test command there. Uncommitted changes are not part of the check.
#   sudo bash scripts/fresh-check.sh          the check; the root is removed after it
#   sudo bash scripts/fresh-check.sh --keep   keeps the root for a look afterwards
# Needs root (chroot and mounts) and the network to Debian's archive. Takes a
# quarter of an hour or more, so CI leaves it out.
set -euo pipefail
repo=$(cd "$(dirname "$0")/.." && pwd)
keep=false
[ "${1:-}" = "--keep" ] && keep=true

if [ "$(id -u)" -ne 0 ]; then
    echo "fresh-check: run as root (it makes a chroot and mounts in it)" >&2
    exit 2
fi
if ! command -v mmdebstrap >/dev/null; then
    DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends mmdebstrap
fi

work=$(mktemp -d /var/tmp/quorvel-fresh.XXXXXX)
rootfs=$work/root
cleanup() {
    if $keep; then
        echo "fresh-check: the root is kept in $rootfs"
    else
        rm -rf --one-file-system "$work"
    fi
}
trap cleanup EXIT

# Archives served from a snapshot carry Release files past their date.
mmdebstrap --variant=minbase --include=git,sudo,python3 \
    --aptopt='Acquire::Check-Valid-Until "false"' \
    bookworm "$rootfs"
cp /etc/resolv.conf "$rootfs/etc/resolv.conf"

# The mounts live in a namespace of their own and vanish with it, whatever
# becomes of the run; the repository is seen read-only, as a remote would be.
unshare --mount --fork bash -euo pipefail -c '
    rootfs=$1 repo=$2
    mount --make-rprivate /
    # The root must be a mount point of its own, or the tests that mount
    # read-only and full folders in a namespace of their own cannot.
    mount --bind "$rootfs" "$rootfs"
    mount -t proc proc "$rootfs/proc"
    mount -t sysfs sys "$rootfs/sys"
    mount --rbind /dev "$rootfs/dev"
    mount -t tmpfs tmpfs "$rootfs/dev/shm"
    mount -t tmpfs tmpfs "$rootfs/tmp"
    mkdir -p "$rootfs/mnt/source"
    mount --bind -o ro "$repo" "$rootfs/mnt/source"
    chroot "$rootfs" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 \
        bash -euo pipefail -c "
            git clone -q /mnt/source /root/quorvel
            cd /root/quorvel
            bash scripts/test.sh
            # A test that skips itself for want of a tool or a privilege
            # hides what a fresh machine lacks.
            if grep \"^SKIP\" build/Testing/Temporary/LastTest.log; then
                echo \"fresh-check: the tests above were skipped\" >&2
                exit 1
            fi
        "
' fresh-check "$rootfs" "$repo"
echo "fresh-check: the README's test command passed on a bare Debian 12"

# shellcheck shell=bash
# Sourced by scripts that run commands in chroots.

# chroots_work: whether chroots can be made here; prints why not
chroots_work() {
    if [ "$(id -u)" != 0 ]; then
        echo 'it needs root'
    elif ! unshare --mount --pid --fork true 2>/dev/null; then
        echo 'this machine allows no mounts'
    else
        return 0
    fi
    return 1
}

# enter ROOT COMMAND...: runs a command in a chroot. Mounts and processes are in namespaces of their own, which
# disappear when the command ends for any reason.
enter() {
    # shellcheck disable=SC2016 # expanded by the inner shell
    unshare --mount --propagation private --pid --fork --kill-child sh -c '
        root=$1
        shift
        mount -t proc proc "$root/proc"
        mount --rbind /dev "$root/dev"
        mount -t tmpfs tmpfs "$root/tmp"
        exec chroot "$root" "$@"' sh "$1" /usr/bin/env -i HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        http_proxy="${http_proxy-}" "${@:2}"
}

# copies_work: whether enter_copy works here; prints why not. A root that is itself an overlay may not serve as a layer.
copies_work() {
    chroots_work || return 1
    # shellcheck disable=SC2016 # expanded by the inner shell
    unshare --mount --propagation private sh -ec '
        mount -t tmpfs tmpfs /mnt
        mkdir /mnt/changes /mnt/work /mnt/root
        mount -t overlay -o lowerdir=/,upperdir=/mnt/changes,workdir=/mnt/work overlay /mnt/root' 2>/dev/null || {
        echo 'this machine allows no overlay over its root'
        return 1
    }
}

# enter_copy FOLDER COMMAND...: runs a command in a copy of this machine's root that is lost with all changes when it ends.
# FOLDER is /mnt in it, and the current folder is empty, so that nothing of the sources or of a build is found by accident.
enter_copy() {
    # shellcheck disable=SC2016 # expanded by the inner shell
    unshare --mount --propagation private bash -ec '
        . scripts/chroots.sh
        copy=$1/copy
        mkdir -p "$copy"
        mount -t tmpfs tmpfs "$copy"
        mkdir "$copy/changes" "$copy/work" "$copy/root"
        mount -t overlay -o "lowerdir=/,upperdir=$copy/changes,workdir=$copy/work" overlay "$copy/root"
        mount --bind "$1" "$copy/root/mnt"
        [ ! -d "$copy/root$PWD" ] || mount -t tmpfs tmpfs "$copy/root$PWD"
        enter "$copy/root" "${@:2}"' bash "$@"
}

# run_arm64_programs: has the kernel run programs for arm64 in QEMU until this shell ends
run_arm64_programs() {
    local formats=/proc/sys/fs/binfmt_misc
    [ -e $formats/register ] || mount -t binfmt_misc none $formats
    if [ ! -e $formats/qemu-aarch64 ]; then
        cat /usr/lib/binfmt.d/qemu-aarch64.conf >$formats/register
        trap "echo -1 >$formats/qemu-aarch64" EXIT
    fi
}

# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2154
# The packages of the guest with radios, fetched and unpacked below a build directory. Sourced by tools/radio.
. "$root/tools/fetch.sh" || exit

# radio_fetch DIR: DIR/packages, a tree as Debian's root is, and DIR/kernel. Does nothing when they are there.
radio_fetch() {
    local dir=$1 log=$1/fetch.log kernel
    kernel=$(radio_kernel) || { echo "apt does not know linux-image-amd64" >&2 && return 1; }
    [ "$(cat "$dir/fetched" 2>/dev/null)" != "$kernel ${packages_radio[*]}" ] || return 0
    echo "Fetching the guest's packages, about 90 MiB" >&2
    rm -rf "$dir/packages" "$dir/fetched" "$dir/initramfs"
    mkdir -p "$dir"
    { radio_download "$dir/debs" "$kernel" && radio_unpack "$dir" "$kernel"; } >"$log" 2>&1 </dev/null || {
        tail -n 20 "$log" >&2
        return 1
    }
    echo "$kernel ${packages_radio[*]}" >"$dir/fetched"
}

# The version of Debian's kernel; the one for clouds has no Wi-Fi.
radio_kernel() {
    apt-cache depends linux-image-amd64 | sed -n 's/.*Depends: linux-image-\([0-9].*\)/\1/p' | grep .
}

# radio_download DIR KERNEL
radio_download() {
    fetch_debs "$1" "${packages_radio[@]}" && (cd "$1" && apt-get download -qq "linux-image-$2")
}

radio_unpack() {
    local tree=$1/packages
    unpack_debs "$1/debs" "$tree" || return 1
    # Debian keeps the regulatory database behind an alternative, which only an installation makes.
    ln -sf regulatory.db-debian "$tree/usr/lib/firmware/regulatory.db"
    ln -sf regulatory.db.p7s-debian "$tree/usr/lib/firmware/regulatory.db.p7s"
    radio_kmod "$tree" depmod -b "$tree" "$2" && cp "$tree/boot/vmlinuz-$2" "$1/kernel"
}

# radio_kmod TREE NAME OPTION...: kmod under one of its NAMEs, on the modules of TREE.
radio_kmod() {
    ln -sfn usr/lib "$1/lib" # where it looks for them
    (exec -a "$2" "$1/usr/bin/kmod" "${@:3}")
    local status=$?
    rm "$1/lib"
    return "$status"
}

# radio_initramfs DIR: DIR/initramfs, which mounts the guest's root: busybox and some modules.
radio_initramfs() {
    local dir=$1 tree=$1/packages source=$root/tools/radio.d/initramfs stage kernel module file
    [ ! "$dir/initramfs" -nt "$source" ] || return 0
    kernel=$(cut -d ' ' -f 1 "$dir/fetched")
    stage=$(mktemp -d) && mkdir "$stage/bin" "$stage/modules" || return 1
    cp "$tree/usr/bin/busybox" "$stage/bin/" && install -m 755 "$source" "$stage/init"
    for module in virtio_pci virtio_console 9p 9pnet_virtio overlay virtio_rng; do
        radio_kmod "$tree" modprobe -d "$tree" -S "$kernel" --show-depends "$module"
    done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }' | while read -r file; do
        cp "${file/#$tree/$tree/usr}" "$stage/modules/" && basename "$file"
    done >"$stage/modules.list"
    (cd "$stage" && find . | bin/busybox cpio -o -H newc) >"$dir/initramfs" 2>/dev/null
    rm -rf "$stage"
}

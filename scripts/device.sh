# shellcheck shell=bash
# Kernels, modules and systems of emulated devices, for scripts that try Quarn on one. To be sourced after
# common.sh and chroot.sh.

# A folder of the script's own.
work=
# Where the kernel lies as its package does, and its version.
kernel=
version=

# own_kernel: elsewhere than on Debian takes the newest kernel of this machine that has its modules.
own_kernel()
{
    local each
    kernel=/
    for each in $(cd /lib/modules 2>/dev/null && printf '%s\n' * | sort -rV); do
        if [[ -r /boot/vmlinuz-$each ]]; then
            version=$each
            return 0
        fi
    done
    die "apt-get is missing, which downloads a kernel, and this machine has none that can be read
    (/boot/vmlinuz-VERSION with /lib/modules/VERSION)"
}

# fetch_kernel RELEASE [COMMAND...]: downloads and unpacks the kernel that Debian would install, unless it is
# there. The command runs apt in a system of that release, in its root; without one it is this machine's.
fetch_kernel()
{
    local package downloaded name=$1
    shift
    kernel=$QUARN_ROOT/build/try-device-kernel/$name
    package=$("$@" apt-cache depends linux-image-amd64 | awk '$1 == "Depends:" { print $2; exit }')
    [[ -n $package ]] || die "apt knows no kernel (linux-image-amd64)"
    if [[ ! -f $kernel/$package ]]; then
        say "Downloading $package."
        rm -rf "$kernel"
        mkdir -p "$kernel" "$work/kernel"
        (cd "$work/kernel" && "$@" apt-get -q download "$package") >/dev/null 2>&1 ||
            die "$package could not be downloaded"
        downloaded=$(find "$work" -name "${package}_*.deb" -print -quit)
        dpkg -x "$downloaded" "$kernel"
        rm "$downloaded"
        # Debian 13 has them where /lib leads to.
        [[ -d $kernel/lib/modules ]] || ln -s usr/lib "$kernel/lib"
        depmod -b "$kernel" "$(basename "$kernel"/lib/modules/*)"
        : >"$kernel/$package"
    fi
    version=$(basename "$kernel"/lib/modules/*)
}

# modules_for NAME...: the files of these modules, each behind those that it needs.
modules_for()
{
    local name
    for name in "$@"; do
        modprobe -d "$kernel" -S "$version" --show-depends "$name"
    done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }'
}

# make_home HOME PICTURE: what a user has there.
make_home()
{
    mkdir -p "$1/Documents/Letters" "$1/Music" "$1/Photos"
    printf 'A text on a device.\n\nIt is shown by the text viewer.\n' >"$1/Documents/notes.txt"
    head -c 3000 /dev/zero >"$1/Music/song.mp3"
    cp "$2" "$1/Photos/logo.png"
}

# installed_system RELEASE ROOT LOG PACKAGE...: makes a bare system of that release in the folder ROOT, with
# these packages and Quarn's from build/packages/, which is built if it is not there. Fetches its kernel.
installed_system()
{
    local release=$1 root=$2 log=$3 package packages=$QUARN_ROOT/build/packages/$1
    shift 3
    compgen -G "$packages/quarn_*.deb" >/dev/null || "$QUARN_ROOT/scripts/package" "$release"
    package=$(compgen -G "$packages/quarn_*_amd64.deb") || die "no package in $packages"
    say "Making a bare system: $release"
    make_system "$release" "$root" "$log" --include="$(IFS=, && printf '%s' "$*")"
    cp "$package" "$root/quarn.deb"
    apt_inside "$root" install /quarn.deb >>"$log" 2>&1 || die "Quarn could not be installed: see $log"
    rm "$root/quarn.deb"
    fetch_kernel "$release" inside "$root" /
    # shellcheck disable=SC2016  # dpkg-query fills it in
    say "Device of $release: kernel $version, $(inside "$root" / dpkg-query -W -f '${Package} ${Version}\n' \
        quarn 'libqt6gui6*' | awk 'NF == 2' | paste -sd, | sed 's/,/, /g')"
}

# pack_system ROOT FILE: makes what a device boots of the system in a folder. Lists of packages, and drivers of
# graphics cards that it does not have, would take memory only.
pack_system()
{
    (cd "$1" && find . -xdev \( -path ./var/lib/apt/lists -o -path ./var/cache -o -path ./usr/share/locale \
        -o -name 'libLLVM*' -o -path '*/dri' \) -prune -o -print | cpio --quiet -o -H newc) >"$2"
}

# shellcheck shell=bash
# Bare Debian systems in folders, for scripts that try something on one. To be sourced after common.sh.

# sources_for RELEASE FOLDER: writes this machine's package sources, with RELEASE in place of its own,
# into files in FOLDER and prints their names.
sources_for()
{
    local own file
    # shellcheck source=/dev/null
    own=$(. /etc/os-release && printf '%s\n' "$VERSION_CODENAME")
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources}; do
        if [[ -f $file ]] && grep -qw "$own" "$file" && grep -q debian "$file"; then
            sed "s/\<$own\>/$1/g" "$file" >"$2/$(basename "$file")"
            printf '%s\n' "$2/$(basename "$file")"
        fi
    done
}

# without_security FILE...: takes the security updates out of package sources. Libraries of two
# architectures fit together only in the same version, and updates of all of them do not reach a mirror at
# the same time.
without_security()
{
    local file
    for file in "$@"; do
        case $file in
        *.sources) awk -v RS= -v ORS='\n\n' '!/security/' "$file" >"$file.new" ;;
        *) sed '/security/d' "$file" >"$file.new" ;;
        esac
        mv "$file.new" "$file"
    done
}

# make_system RELEASE ROOT LOG [OPTIONS OF mmdebstrap...]: makes a bare system in the folder ROOT; for
# several architectures, which a caller says with several_architectures=true, without security updates.
make_system()
{
    local release=$1 root=$2 log=$3 settings sources
    shift 3
    command -v apt-config >/dev/null || {
        install_missing chroot
        die "apt is missing, which a bare system is made with"
    }
    ((EUID == 0)) || die "only root can make a bare system"
    install_missing chroot
    command -v mmdebstrap >/dev/null || die "mmdebstrap is missing"
    settings=$(mktemp -d)
    mapfile -t sources < <(sources_for "$release" "$settings")
    ((${#sources[@]} > 0)) || die "this machine has no package sources of Debian"
    ! ${several_architectures:-false} || without_security "${sources[@]}"
    apt-config dump Acquire >"$settings/apt.conf"
    mmdebstrap --mode=root --variant=minbase --aptopt="$settings/apt.conf" "$@" "$release" "$root" \
        "${sources[@]}" >"$log" 2>&1 || {
        rm -rf "$settings"
        die "no bare system: see $log"
    }
    rm -rf "$settings"
    apt_inside "$root" update >>"$log" 2>&1 || die "no lists of packages: see $log"
}

# inside ROOT FOLDER COMMAND...: runs a command in the system in ROOT, in a folder of it. What the
# command mounts and starts ends with it.
inside()
{
    local root=$1 folder=$2
    shift 2
    # shellcheck disable=SC2016  # the inner shell expands it
    unshare --mount --pid --fork --kill-child --mount-proc --root="$root" --wd="$folder" \
        env -i HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        bash -c 'mount -t tmpfs -o mode=1777 tmpfs /dev/shm &&
            mount -t devpts -o newinstance,ptmxmode=0666 devpts /dev/pts && exec "$@"' - "$@"
}

# apt_inside ROOT COMMAND...: apt-get in the system in ROOT, asking nothing. The system goes at the end:
# its files need not be safe on the disk.
apt_inside()
{
    local root=$1
    shift
    inside "$root" / env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 apt-get -q -y --no-install-recommends \
        -o DPkg::Options::=--force-unsafe-io "$@"
}

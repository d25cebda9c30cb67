# shellcheck shell=bash
# What the scripts share: strict mode, the root of the repository, packages and build trees.
# To be sourced.

set -euo pipefail

QUARN_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# Texts of users and files are UTF-8; a bare system has no locale set.
if [[ -z ${LC_ALL-}${LC_CTYPE-}${LANG-} ]]; then
    export LC_CTYPE=C.UTF-8
fi

say()
{
    printf '%s\n' "$*"
}

die()
{
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# Prints the comment at the head of a script, which is its usage.
usage()
{
    awk 'NR == 1 { next } !/^#/ { exit } { sub(/^# ?/, ""); print }' "$0"
}

# How many compilers run at a time: one per processor, and one per gigabyte of free memory.
job_count()
{
    local jobs free
    jobs=$(nproc)
    free=$(awk '/^MemAvailable:/ { print int($2 / 1048576) }' /proc/meminfo)
    if ((free < jobs)); then
        jobs=$free
    fi
    printf '%s\n' "${QUARN_JOBS:-$((jobs > 0 ? jobs : 1))}"
}

# packages_of SECTION...: the packages of these sections of the list. Of alternatives the first that
# apt knows; the first of all if it knows none.
packages_of()
{
    local names name
    awk -v wanted=" $* " '
        /^\[/ { section = substr($1, 2, length($1) - 2); next }
        NF && !/^#/ && index(wanted, " " section " ") { gsub(/\|/, " "); print }
    ' "$QUARN_ROOT/scripts/packages.txt" | while read -r -a names; do
        if ((${#names[@]} > 1)); then
            for name in "${names[@]}"; do
                if apt-cache show "$name" >/dev/null 2>&1; then
                    names=("$name")
                    break
                fi
            done
        fi
        printf '%s\n' "${names[0]}"
    done
}

# missing_packages SECTION...: those that are not installed.
missing_packages()
{
    local wanted installed
    mapfile -t wanted < <(packages_of "$@")
    # dpkg-query fails if one is unknown to it, which here only means that it is missing.
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null ||
        true)
    awk 'NR == FNR { if ($1 == "installed") have[$2]; next } !($1 in have)' \
        <(printf '%s\n' "$installed") <(printf '%s\n' "${wanted[@]}")
}

# as_root COMMAND...: runs a command with the rights to install packages.
as_root()
{
    if ((EUID == 0)); then
        "$@"
    else
        sudo "$@"
    fi
}

# apt COMMAND...: apt-get that asks nothing and waits for another one to end.
apt()
{
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300 "$@"
}

# install_missing SECTION...: installs the packages of these sections that are not installed.
install_missing()
{
    local missing
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "This is no Debian system. Needed are what Debian calls:" >&2
        packages_of "$@" >&2
        return 0
    fi
    mapfile -t missing < <(missing_packages "$@")
    if ((${#missing[@]} == 0)); then
        return 0
    fi
    if ((EUID != 0)) && ! command -v sudo >/dev/null; then
        die "packages are missing, and only root can install them. As root, run:
    apt-get install --no-install-recommends ${missing[*]}"
    fi
    apt update || say "The package lists could not be renewed; trying with the old ones." >&2
    # Renewed lists may know other alternatives.
    mapfile -t missing < <(missing_packages "$@")
    say "Installing: ${missing[*]}"
    apt install --no-install-recommends "${missing[@]}" ||
        die "these packages could not be installed: ${missing[*]}"
}

# configure_tree PRESET [CACHE ENTRIES...]: configures the build tree of a CMake preset. Does
# nothing if it was done with the same settings; the tree follows changed CMake files on its own.
configure_tree()
{
    local preset=$1 tree settings
    shift
    tree=$(tree_of "$preset")
    settings="$QUARN_ROOT $* $(cksum <"$QUARN_ROOT/CMakePresets.json")"
    if [[ -f $tree/build.ninja && $(cat "$tree/quarn_settings" 2>/dev/null) == "$settings" ]]; then
        return 0
    fi
    (cd "$QUARN_ROOT" && cmake --fresh --preset "$preset" "$@") || die "configuring failed"
    printf '%s\n' "$settings" >"$tree/quarn_settings"
}

# tree_of PRESET: the build tree of a preset.
tree_of()
{
    case $1 in
    asan) printf '%s\n' "$QUARN_ROOT/build/asan-tree" ;;
    *) printf '%s\n' "$QUARN_ROOT/build/$1" ;;
    esac
}

# build_tree PRESET TARGET... [-- CACHE ENTRIES...]: configures and builds. One at a time: a second
# start waits for the first.
build_tree()
{
    local preset=$1 targets=() lock
    shift
    while (($# > 0)) && [[ $1 != -- ]]; do
        targets+=("$1")
        shift
    done
    [[ ${1-} != -- ]] || shift
    mkdir -p "$QUARN_ROOT/build"
    exec {lock}>"$QUARN_ROOT/build/.lock"
    if ! flock --nonblock "$lock"; then
        say "Another build is running; waiting for its end."
        flock "$lock"
    fi
    configure_tree "$preset" "$@"
    ninja -C "$(tree_of "$preset")" -j "$(job_count)" "${targets[@]}" ||
        die "building failed"
    exec {lock}>&-
}

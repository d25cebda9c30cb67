# The links of a work folder to what is installed.

# target_of PATH: puts into $target where the package has what is linked at this path.
target_of()
{
    case $1 in
    quarn | bin/quarn-*) target=$programs/$1 ;;
    bin/*) target=$tools/${1#bin/} ;;
    *)
        target=$data/$1
        [ -e "$target" ] || target=$programs/$1
        ;;
    esac
}

# is_known PATH: whether the package before had this path: if it is not there, the user took it away.
is_known()
{
    case $known in
    *"$newline$1$newline"*) return 0 ;;
    esac
    return 1
}

# leads_to_package PATH: whether it is a link to what this package, or the one before, has or had.
leads_to_package()
{
    [ -L "$work/$1" ] || return 1
    led=$(readlink "$work/$1")
    for root in "$programs" "$tools" "$data" "$old_programs" "$old_tools" "$old_data"; do
        [ -n "$root" ] || continue
        case $led in
        "$root"/*) return 0 ;;
        esac
    done
    return 1
}

# set_link PATH: makes the link at this path, or makes it lead to the package again.
set_link()
{
    case $1 in
    */*) [ -d "$work/${1%/*}" ] || attempt mkdir -p "$work/${1%/*}" || return 1 ;;
    esac
    attempt ln -sfn "$target" "$work/$1"
}

# update_link PATH: adds, mends or leaves a link.
update_link()
{
    target_of "$1"
    if [ -L "$work/$1" ]; then
        [ "$work/$1" -ef "$target" ] && [ "$old_programs" = "$programs" ] && return 0
        leads_to_package "$1" || return 0
        [ -e "$work/$1" ] || mended="$mended $1"
        set_link "$1"
    elif [ ! -e "$work/$1" ]; then
        case $1 in
        quarn | res) ;;
        *) is_known "$1" && return 0 ;;
        esac
        set_link "$1" && added="$added $1"
    fi
}

# drop_old_links: takes away links to what the package no longer has.
drop_old_links()
{
    IFS=$newline
    for path in $known; do
        unset IFS
        if [ -L "$work/$path" ] && [ ! -e "$work/$path" ] && leads_to_package "$path"; then
            attempt rm -f "$work/$path" || return 1
            case $path in
            plugins/*) rmdir "$work/${path%/*}" 2>/dev/null ;;
            esac
            mended="$mended $path"
        fi
    done
    unset IFS
}

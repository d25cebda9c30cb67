# What a start does, from here on.

# Called by the name of a tool that works on the user's work folder, it starts that.
# A link of another name is what it leads to.
program=quarn
called=$0
while [ "${called##*/}" != quarn ]; do
    case ${called##*/} in
    quarn-*)
        if [ -x "$programs/bin/${called##*/}" ]; then
            program=bin/${called##*/}
            break
        fi
        ;;
    esac
    [ -L "$called" ] || break
    led=$(readlink "$called")
    case $led in
    /*) called=$led ;;
    *) called=${called%/*}/$led ;;
    esac
done

case $program${1-} in
quarn--help)
    usage
    exit 0
    ;;
quarn--version)
    printf 'quarn %s\n' "$version"
    exit 0
    ;;
bin/*-h | bin/*--help)
    exec "$programs/$program" "$1"
    ;;
esac

case $program${1-} in
quarn--vnc | quarn--vnc=*)
    wanted=5900
    [ "$1" = --vnc ] || wanted=${1#--vnc=}
    choose_vnc "$wanted" || exit
    shift
    ;;
esac

choose_display "$@" || exit

if [ ! -x "$programs/quarn" ] || [ ! -d "$data/res" ]; then
    say "$programs or $data is missing; install the package again"
    exit 1
fi

own_folder
problem='HOME is not set'
if [ -z "$wanted" ] || ! prepare "$wanted"; then
    reason=$problem
    if [ -n "$wanted" ] && is_usable "$wanted"; then
        say "$wanted stays as it is: $reason"
    elif [ -n "${XDG_RUNTIME_DIR-}" ] && prepare "$XDG_RUNTIME_DIR/quarn" 2>/dev/null; then
        say "settings and bookmarks last until you log out: $reason"
    else
        say "$reason"
        exit 1
    fi
elif [ -n "${XDG_RUNTIME_DIR-}" ] && ! [ "$XDG_RUNTIME_DIR/quarn" -ef "$work" ]; then
    take_in_bookmarks "$XDG_RUNTIME_DIR/quarn"
fi
if [ -f "$place/.package/notice" ]; then
    export QUARN_NOTICE="$place/.package/notice"
fi
exec "$place/$program" "$@"

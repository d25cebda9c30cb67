# Where the work folder and the home of the user are, and by which name the program gets it.

# own_folder: puts the user's work folder into $wanted.
own_folder()
{
    case ${XDG_DATA_HOME-} in
    /*) wanted=$XDG_DATA_HOME/quarn ;;
    *) wanted=${HOME:+$HOME/.local/share/quarn} ;;
    esac
}

# choose_home: puts into $home where the first tab of a new user starts.
choose_home()
{
    home=${HOME-}/
    case $home in
    *"$newline"*) home=/ ;;
    esac
}

# choose_place: puts into $place the name of the work folder for the program. Its command lines have the
# name as it is, so one with blanks, quotes or the like needs another: a link in the user's own folder
# of what runs.
choose_place()
{
    place=$work
    case $work in
    *[\ \	\'\"\\\$\`\&\;\|\<\>\(\)\*\?\[\]{}~#!^]* | *"$newline"*) ;;
    *) return 0 ;;
    esac
    own=${XDG_RUNTIME_DIR-}
    case $own in
    *[!A-Za-z0-9/._-]*) own= ;;
    /*) ;;
    *) own= ;;
    esac
    if [ -z "$own" ] || [ ! -w "$own" ]; then
        own=/tmp/quarn-$(id -u)
        [ -d "$own" ] || attempt mkdir -m 700 "$own" || return 1
        if [ -L "$own" ] || [ ! -O "$own" ]; then
            problem="$own belongs to another user"
            return 1
        fi
    fi
    place=$own/quarn-work
    [ -L "$place" ] && [ "$place" -ef "$work" ] && return 0
    attempt ln -sfn "$work" "$place"
}

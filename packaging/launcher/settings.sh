# Settings and tables, which are copied: they are renewed as long as the user has not changed them.

# render FILE: prints a settings file of the package with the user's folders filled in.
render()
{
    [ "$1" = fm.cfg ] || {
        cat "$data/$1"
        return
    }
    while IFS= read -r line; do
        case $line in
        'Work_folder = '*) line="Work_folder = $place/" ;;
        'Start_path_tab1 = '*) line="Start_path_tab1 = $home" ;;
        esac
        printf '%s\n' "$line" || return 1
    done <"$data/$1"
}

# trim TEXT: puts it without the blanks around it into $trimmed.
trim()
{
    trimmed=${1#"${1%%[! 	]*}"}
    trimmed=${trimmed%"${trimmed##*[! 	]}"}
}

# with_place FILE: prints the user's settings, in which the work folder, and the home, go by other names
# since the last start. Of one that the user gave another folder nothing is changed. As for the program,
# blanks around key and value do not count, and lines may end as on other systems.
with_place()
{
    return_sign=$(printf '\r')
    while IFS= read -r line || [ -n "$line" ]; do
        end=
        case $line in
        *"$return_sign") end=$return_sign ;;
        esac
        line=${line%"$end"}
        trim "${line%%=*}"
        key=$trimmed
        trim "${line#*=}"
        case $key=$trimmed in
        "Work_folder=$old_place/") line="Work_folder = $place/" ;;
        "Start_path_tab1=${old_home:-/}" | "Start_path_tab1=${old_home%/}")
            [ -z "$old_home" ] || line="Start_path_tab1 = $home"
            ;;
        esac
        printf '%s\n' "$line$end" || return 1
    done <"$1"
}

# was_moved: whether the work folder or the home goes by another name than at the last start.
was_moved()
{
    [ -n "$old_place" ] && [ "$old_place" != "$place" ] || [ -n "$old_home" ] && [ "$old_home" != "$home" ]
}

# put FILE: makes $notes/new the user's file of this name, whole or not at all.
put()
{
    attempt mv -f "$notes/new" "$work/$1"
}

# renew FILE: puts the package's file there and keeps what it offered. Cut off between the two, what is there
# is what the package offers, and so is known at the next start.
renew()
{
    attempt cp "$notes/new" "$notes/copied" && put "$1" && attempt mv -f "$notes/copied" "$notes/copies/$1"
}

# remember FILE: keeps what the package offered, to know later whether the user changed it.
remember()
{
    cmp -s "$notes/new" "$notes/copies/$1" && return 0
    attempt cp "$notes/new" "$notes/copied" && attempt mv -f "$notes/copied" "$notes/copies/$1"
}

# find_new_settings: puts into $settings the keys of the package's settings that neither the file of the user
# nor the package before has.
find_new_settings()
{
    own=$newline$(cat "$work/fm.cfg" "$notes/copies/fm.cfg" 2>/dev/null)
    while IFS= read -r line; do
        key=${line%%" = "*}
        case $line in
        [\;\#\[]*) continue ;;
        *' = '*) ;;
        *) continue ;;
        esac
        case $own in
        *"$newline$key ="* | *"$newline$key="*) ;;
        *) settings="$settings $key" ;;
        esac
    done <"$notes/new"
}

# update_copy FILE: adds or renews a settings file that nobody has changed.
update_copy()
{
    attempt_to "$notes/new" render "$1" || return 1
    [ "$1" != fm.cfg ] || [ ! -f "$work/$1" ] || find_new_settings
    if [ -L "$work/$1" ]; then
        # The user keeps it elsewhere, on a card that may be out: nothing comes in its place.
        if [ "$1" = fm.cfg ] && [ ! -e "$work/$1" ]; then
            problem="$work/$1 is a link that leads nowhere"
            return 1
        fi
        [ "$old_edition" = "$edition" ] || cmp -s "$notes/new" "$notes/copies/$1" || kept="$kept $1"
        remember "$1"
    elif [ ! -e "$work/$1" ]; then
        if [ "$1" != fm.cfg ] && is_known "$1"; then
            return 0
        fi
        is_known "$1" || added="$added $1"
        renew "$1"
    elif cmp -s "$work/$1" "$notes/new"; then
        remember "$1"
    elif cmp -s "$work/$1" "$notes/copies/$1"; then
        [ "$old_edition" = "$edition" ] || renewed="$renewed $1"
        renew "$1"
    else
        if [ "$1" = fm.cfg ] && was_moved; then
            attempt cp "$notes/new" "$notes/offered" || return 1
            attempt_to "$notes/new" with_place "$work/$1" && put "$1" || return 1
            attempt mv -f "$notes/offered" "$notes/new" || return 1
        fi
        [ "$old_edition" = "$edition" ] || cmp -s "$notes/new" "$notes/copies/$1" || kept="$kept $1"
        remember "$1"
    fi
}

# The work folder as a whole: whether it is as it should be, and made so.

# is_whole: whether nothing needs to be added, renewed or mended.
is_whole()
{
    [ "$old_edition" = "$edition" ] && [ "$old_place" = "$place" ] && [ "$old_home" = "$home" ] || return 1
    [ "$old_programs" = "$programs" ] && [ -f "$work/fm.cfg" ] || return 1
    [ -x "$work/quarn" ] && [ -e "$work/res" ] || return 1
    for path in $linked_programs $linked_tools $linked_data; do
        [ -e "$work/$path" ] || [ ! -L "$work/$path" ] || return 1
    done
}

# update: makes the work folder whole. One start at a time; another one waits for it. The program must not
# take the lock along.
update()
{
    attempt mkdir -p "$notes/copies" && attempt_to "$notes/lock" true || return 1
    exec 9>"$notes/lock"
    flock -w 60 9 2>/dev/null
    make_whole
    status=$?
    exec 9>&-
    [ "$status" = 0 ] || return 1
    tell_changes
}

# make_whole: adds, renews and mends what needs it.
make_whole()
{
    read_notes
    first=$old_edition
    if [ -n "$first" ] && [ -z "$old_home" ]; then
        # Versions before this one did not note it.
        old_home=$(sed -n 's/^Start_path_tab1 = //p' "$notes/copies/fm.cfg" 2>/dev/null)
    fi
    known=$newline$(tail -n +6 "$notes/package" 2>/dev/null)$newline
    added='' renewed='' kept='' mended='' settings=''
    for path in $linked_programs $linked_tools $linked_data; do
        update_link "$path" || return 1
    done
    drop_old_links || return 1
    for path in $copied; do
        update_copy "$path" || return 1
    done
    rm -f "$notes/new"
    attempt_to "$notes/written" printf '%s\n' "$home" && attempt mv -f "$notes/written" "$notes/home" || return 1
    attempt_to "$notes/written" write_notes && attempt mv -f "$notes/written" "$notes/package" || return 1
    leave_notice
}

# prepare FOLDER: makes this the work folder. If it fails, $problem says why.
prepare()
{
    work=$1
    notes=$work/.package
    if [ -d "$work" ] && [ ! -O "$work" ]; then
        problem="$work belongs to another user"
        return 1
    fi
    choose_home
    choose_place || return 1
    read_notes
    is_whole || update
}

# is_usable FOLDER: whether the program can start in a work folder that could not be made whole.
is_usable()
{
    [ -O "$1" ] && [ -x "$1/quarn" ] && [ -f "$1/res/font.ttf" ] && [ -f "$1/fm.cfg" ] &&
        [ "$old_place" = "$place" ]
}

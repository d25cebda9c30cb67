# What one start leaves in the work folder for the next one, and what is told of an upgrade.

# read_notes: what the last start that wrote anything left in the work folder: for which package it was
# ($old_edition and the folders $old_programs, $old_tools, $old_data), how the program calls the work
# folder ($old_place), and where the first tab started ($old_home; empty if that is not known).
read_notes()
{
    old_edition='' old_programs='' old_tools='' old_data='' old_place='' old_home=''
    [ -f "$notes/package" ] || return 0
    {
        read -r old_edition
        read -r old_programs
        read -r old_tools
        read -r old_data
        read -r old_place
    } <"$notes/package"
    [ ! -f "$notes/home" ] || IFS= read -r old_home <"$notes/home"
}

# write_notes: prints what read_notes and is_known ask for at a later start.
write_notes()
{
    printf '%s\n' "$edition" "$programs" "$tools" "$data" "$place" \
        $linked_programs $linked_tools $linked_data $copied
}

# lines_of KIND WORD...: prints a line for each word.
lines_of()
{
    kind=$1
    shift
    for word in "$@"; do
        printf '%s %s\n' "$kind" "$word"
    done
}

# notice: prints what is new, below what an earlier upgrade brought that nobody has seen yet.
notice()
{
    [ ! -f "$notes/notice" ] || cat "$notes/notice"
    printf '%s\n' "version $version" "folder $data"
    lines_of setting $settings
    lines_of new $added
    lines_of renewed $renewed
    lines_of kept $kept
}

# leave_notice: for the program to show once after an upgrade. Where there is no room for it, what is said
# on stderr has to do.
leave_notice()
{
    [ -n "$first" ] && [ "$old_edition" != "$edition" ] || return 0
    [ -n "$settings$added$renewed$kept" ] || return 0
    attempt_to "$notes/noticed" notice && attempt mv -f "$notes/noticed" "$notes/notice"
}

# tell_changes: once, in one line.
tell_changes()
{
    if [ -z "$first" ]; then
        say "your settings are in $work"
    elif [ -n "$added$renewed$kept$mended" ]; then
        say "$work is for version $version now${added:+; new:$added}${renewed:+; renewed:$renewed}${kept:+; \
yours stays, the new one is in $data:$kept}${mended:+; mended:$mended}"
    fi
}

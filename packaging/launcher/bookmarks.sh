# Bookmarks of a session whose home had no room.

# take_in_bookmarks FOLDER: adds to the user's bookmarks those of a work folder that was to last for the session
# alone; the program may have added them while the home had no room.
take_in_bookmarks()
{
    made=$1/bookmark.cfg
    [ -f "$made" ] && [ -O "$made" ] || return 0
    own=$(cat "$work/bookmark.cfg" 2>/dev/null)
    new=
    while IFS= read -r name || [ -n "$name" ]; do
        [ -n "$name" ] || IFS= read -r name
        IFS= read -r path
        case $newline$own$newline in
        *"$newline$name$newline$path$newline"*) ;;
        *) new=$new$newline$name$newline$path ;;
        esac
    done <"$made"
    if [ -n "$new" ]; then
        # As the program leaves the file, which takes a line break at the end for one more bookmark.
        target=$work/bookmark.cfg
        [ ! -L "$target" ] || target=$(readlink -f "$target")
        problem=$( { printf '%s' "$own$new" | cat >"$target.new" && mv -f "$target.new" "$target"; } 2>&1) || {
            rm -f "$target.new"
            say "bookmarks of this session stay in $made: ${problem%%"$newline"*}"
            return 0
        }
        say "added the bookmarks of this session to yours"
    fi
    rm -f "$made"
}

#pragma once

// The items of the main window's menus by their ids, which are their positions, too.

namespace OptionsItem
{
enum Id {
    OpenWith = 1,
    Delete,
    CopyMenu,
    Rename,
    MakeFolder,
    Bookmarks,
    SendByBluetooth,
    Properties,
    Trash,
};
} // namespace OptionsItem

namespace CopyItem
{
enum Id { Copy = 1, Move, Paste, PasteAs };
} // namespace CopyItem

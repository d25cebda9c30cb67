// The soft keys of the main window and their menus.

#include "shell/fm.h"

#include "assoc/plugintable.h"
#include "lang/texts.h"
#include "platform/zoptionsmenu.h"
#include "platform/zpicture.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "shell/settings.h"
#include "widgets/menuitems.h"

namespace
{

// The tabs move a text past its item's icon.
const QLatin1String Indent("\t\t\t");

using Submenu = ZOptionsMenu* FM::*;

struct MenuRow {
    int id; ///< also the position
    const QString* text;
    const char* icon; ///< in res/img/
    Submenu submenu;  ///< nullptr: none
    bool enabled;
    const char* slot; ///< nullptr: none
};

const MenuRow MainRows[] = {
    {OptionsItem::OpenWith, &LANG_OPEN_WITH, "open_with.png", &FM::openWithMenu, true, nullptr},
    {OptionsItem::Delete, &LANG_DELETE, "delete.png", nullptr, true, "slot_Delete()"},
    {OptionsItem::CopyMenu, &LANG_COPY_MENU, "copy.png", &FM::copyMenu, true, nullptr},
    {OptionsItem::Rename, &LANG_RENAME, "rename.png", nullptr, true, "slot_Rename()"},
    {OptionsItem::MakeFolder, &LANG_MKDIR, "mkdir.png", nullptr, true, "slot_MkDir()"},
    {OptionsItem::Bookmarks, &LANG_BOOKMARK, "bookmark.png", &FM::bookmarkMenu, true, nullptr},
    {OptionsItem::SendByBluetooth, &LANG_BT, "bt.png", nullptr, true, "slot_SendBt()"},
    {OptionsItem::Properties, &LANG_PROPERTIES, "props.png", nullptr, true, "slot_Properties()"},
};

// Behind all others, if deleting moves to the trash.
const MenuRow TrashRows[] = {
    {OptionsItem::Trash, &LANG_TRASH, "trash.png", nullptr, true, "slot_Trash()"},
};

// The two paste items are armed, the first of them only, by copy and move.
const MenuRow CopyRows[] = {
    {CopyItem::Copy, &LANG_COPY, "copy.png", nullptr, true, "slot_Copy()"},
    {CopyItem::Move, &LANG_MOVE, "move.png", nullptr, true, "slot_Move()"},
    {CopyItem::Paste, &LANG_PASTE, "paste.png", nullptr, false, nullptr},
    {CopyItem::PasteAs, &LANG_PASTE_AS, "paste.png", nullptr, false, nullptr},
};

void loadMenuIcon(ZPicture& icon, const QString& name)
{
    icon.cover(ZPicture::fromFile(work_folder + QStringLiteral("res/img/") + name));
}

template<size_t Count>
void fillMenu(FM* window, ZOptionsMenu* menu, const MenuRow (&rows)[Count], ZPicture& icon)
{
    for (const MenuRow& row : rows) {
        loadMenuIcon(icon, QLatin1String(row.icon));
        ZOptionsMenu* submenu = row.submenu != nullptr ? window->*row.submenu : nullptr;
        menu->insertItem(Indent + *row.text, submenu, icon, row.enabled, row.id, row.id);
    }
    for (const MenuRow& row : rows) {
        if (row.slot != nullptr)
            menu->connectItem(row.id, window, row.slot);
    }
}

/// Puts a new menu in the place of one that may be in use right now. It goes with the window.
void replaceMenu(FM* window, ZOptionsMenu*& menu, QWidget* parent)
{
    if (menu != nullptr)
        menu->deleteLater();
    menu = new ZOptionsMenu(QRect(QPoint(0, 0), QPoint(-1, -1)), parent, nullptr, {},
                            ZSkinService::clsOptionsMenu);
    menu->setFont(window->font());
    QObject::connect(window, &QObject::destroyed, menu, &QObject::deleteLater);
}

} // namespace

void FM::createSoftKeys()
{
    softKey = new ZSoftKey(QString(), this, this);
    softKey->setText(ZSoftKey::Left, LANG_OPTIONS, 0);
    ZOptionsMenu::setSoftKeyTexts(LANG_SELECT, LANG_BACK);
}

void FM::createSoftKeysFtab()
{
    replaceMenu(this, optionsMenu, softKey);
    replaceMenu(this, openWithMenu, nullptr);
    replaceMenu(this, copyMenu, nullptr);
    replaceMenu(this, bookmarkMenu, nullptr);
    softKey->setOptMenu(ZSoftKey::Left, optionsMenu);
    // One picture serves all items: where a picture is missing an item shows the last one loaded.
    ZPicture icon;
    fillOpenWithMenu(icon);
    fillBookmarkMenu(icon);
    fillMenu(this, copyMenu, CopyRows, icon);
    fillMenu(this, optionsMenu, MainRows, icon);
    if (extras.trash)
        fillMenu(this, optionsMenu, TrashRows, icon);
}

void FM::createSoftKeysStab()
{
    createSoftKeysFtab();
}

void FM::fillOpenWithMenu(ZPicture& icon)
{
    const ZPicture unknown =
        ZPicture::fromFile(work_folder + QStringLiteral("/res/img/unk_plugin.png"));
    for (int position = 0; position < plug_nums; ++position) {
        const plugin_struct& plugin = plugins[size_t(position)];
        if (plugin.kind != 0 && plugin.kind != 1)
            continue;
        icon.cover(unknown);
        if (plugin.kind == 1) {
            icon.cover(ZPicture::fromFile(fullPathPluginFolder(work_folder, plugin.plugin_num) +
                                          QStringLiteral("icon.png")));
        } else if (pluginIsInstalled(work_folder, plugin.name)) {
            icon.cover(ZPicture::fromFile(work_folder + QStringLiteral("/plugins/") + plugin.name +
                                          QStringLiteral("/icon.png")));
        }
        openWithMenu->insertItem(Indent + pluginLabel(work_folder, plugin), nullptr, icon, true,
                                 position, position);
        openWithMenu->connectItem(position, this, "slot_OpenWith()");
    }
}

void FM::fillBookmarkMenu(ZPicture& icon)
{
    const int count = int(bookmarkList.size());
    for (int i = 0; i < count; ++i) {
        bookmarkMenu->insertItem(bookmarkList.at(i), nullptr, QPixmap(), true, i, i);
        bookmarkMenu->connectItem(i, this, "slot_BookMark()");
    }
    loadMenuIcon(icon, QStringLiteral("add.png"));
    insertAddBookmark(count, icon);
}

void FM::insertAddBookmark(int position, const ZPicture& icon)
{
    bookmarkMenu->insertItem(Indent + LANG_ADD_BOOKMARK, nullptr, icon, true, position, position);
    bookmarkMenu->connectItem(position, this, "slot_AddBookMark()");
}

#pragma once

#include "platform/zlistbox.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"

#include <QStringList>

// The screens of the module "extras", by what can be seen of them from outside.

/// One that is up; nullptr if there is none.
inline QWidget* safeScreen(const char* name)
{
    for (auto* screen : ZScreen::instance()->findChildren<QWidget*>(QLatin1String(name))) {
        if (screen->isVisible())
            return screen;
    }
    return nullptr;
}

inline QWidget* entryPage()
{
    return safeScreen("EntryPage");
}

inline QWidget* operationBox()
{
    return safeScreen("OperationBox");
}

/// Whether a page has the keys.
inline bool pageHasKeys()
{
    return entryPage() != nullptr && ZScreen::instance()->isActive(entryPage());
}

/// The texts of its rows: name|detail.
inline QStringList pageRows()
{
    QStringList result;
    auto* list = entryPage() != nullptr ? entryPage()->findChild<ZListBox*>() : nullptr;
    for (int row = 0; list != nullptr && row < list->count(); ++row)
        result.append(list->item(row)->getSubItemText(1, 0) + QLatin1Char('|') +
                      list->item(row)->getSubItemText(1, 1));
    return result;
}

inline QStringList pageLines()
{
    return entryPage() != nullptr ? entryPage()->property("lines").toStringList() : QStringList();
}

inline QStringList pageNotes()
{
    return entryPage() != nullptr ? entryPage()->property("notes").toStringList() : QStringList();
}

inline QStringList pageKeys()
{
    auto* keys = entryPage() != nullptr ? entryPage()->findChild<ZSoftKey*>() : nullptr;
    return keys != nullptr ? QStringList{keys->text(0), keys->text(1)} : QStringList();
}

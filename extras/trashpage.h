#pragma once

#include "extras/entrypage.h"
#include "extras/trash.h"

#include <QHash>

class ZOptionsMenu;

/// The list of what is in the trash, the latest first, with a menu of what can be done.
class TrashPage : public EntryPage
{
    Q_OBJECT

public:
    enum Command { Restore, DeleteForGood, Empty, Properties };

    TrashPage();

    /// Shows these entries; the highlight stays on its entry, else on its row, or goes to the last.
    void setEntries(const QList<TrashEntry>& entries);
    const QList<TrashEntry>& entries() const { return entries_; }
    /// The highlighted one; nothing is highlighted only while there are none.
    const TrashEntry& current() const { return entries_.at(currentRow()); }

    ZOptionsMenu* menu() const { return menu_; }

signals:
    void commanded(int command);

public slots:
    void takeCommand();

private:
    void makeMenu();
    void openMenu();
    Row rowFor(const TrashEntry& entry);
    const QPixmap& icon(const TrashEntry& entry);

    QList<TrashEntry> entries_;
    ZOptionsMenu* menu_ = nullptr;
    QHash<QString, QPixmap> icons_; ///< by the name of their file
};

#include "shell/statusline.h"

#include "browser/filebrowserftab.h"
#include "files/paths.h"
#include "lang/texts.h"
#include "platform/znavtabwidget.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"
#include "shell/fm.h"
#include "widgets/menuitems.h"

#include <QAbstractItemModel>

#include <algorithm>

namespace
{

/// A folder's own name; that of the root is its path.
QString shownNameOf(const QString& folder)
{
    const QString name = namePart(folder);
    return name.isEmpty() ? folder : name;
}

} // namespace

StatusLine::StatusLine(FM* window) : QObject(window), window_(window)
{
    for (const int page : {FM::Panel1, FM::Panel2}) {
        const FileBrowserFtab* panel = window->panel(page);
        connect(panel, &ZListBox::highlighted, this, &StatusLine::lookLater);
        connect(panel, &ZListBox::selected, this, &StatusLine::lookLater);
        connect(panel->model(), &QAbstractItemModel::modelReset, this, &StatusLine::lookLater);
    }
    connect(window->tabWidget(), &ZNavTabWidget::currentChanged, this, &StatusLine::lookLater);
    // Commands are given in menus, which are closed then.
    connect(ZScreen::instance(), &ZScreen::softKeysChanged, this, &StatusLine::lookLater);
    lookLater();
}

void StatusLine::lookLater()
{
    if (willLook_)
        return;
    willLook_ = true;
    QMetaObject::invokeMethod(this, &StatusLine::look, Qt::QueuedConnection);
}

void StatusLine::look()
{
    willLook_ = false;
    const FileBrowserFtab* panel = window_->activePanel();
    // Of a folder that cannot be read there are no rows, and the panel's path is that of another.
    if (panel == nullptr || panel->count() == 0)
        window_->softKey->setStatus(QString(), QString());
    else
        window_->softKey->setStatus(shownNameOf(panel->curPath), text());
}

QString StatusLine::text() const
{
    const FileBrowserFtab* panel = window_->activePanel();
    if (panel->isMultiSelect())
        return withNumber(LANG_MARKED, markedEntries());
    const auto isNoted = [this](const char* paste) {
        return window_->copyMenu->isItemConnected(CopyItem::Paste, window_, paste);
    };
    const auto& noted = window_->clipboardList;
    const int entries = int(noted.size() - noted.count(QString()));
    if (isNoted("slot_CopyTo()"))
        return withNumber(LANG_TO_COPY, entries);
    if (isNoted("slot_MoveTo()"))
        return withNumber(LANG_TO_MOVE, entries);
    const QString number = QString::number(panel->entryCount());
    const int position = panel->entryPosition();
    return position > 0 ? QString::number(position) + QLatin1Char('/') + number : number;
}

int StatusLine::markedEntries() const
{
    const FileBrowserFtab* panel = window_->activePanel();
    int marked = 0;
    for (int row = 0; row < panel->count(); ++row)
        marked += panel->itemChecked(row) ? 1 : 0;
    return marked;
}

#include "extras/trashpage.h"

#include "assoc/mimetable.h"
#include "extras/safetexts.h"
#include "extras/trashwords.h"
#include "files/entrytexts.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/zlistbox.h"
#include "platform/zoptionsmenu.h"
#include "platform/zpicture.h"
#include "platform/zpixmap.h"
#include "platform/zskinservice.h"
#include "shell/settings.h"

#include <sys/stat.h>

#include <algorithm>

namespace
{

/// The picture of an entry as the panels have it, below "res/img/".
QString pictureOf(const TrashEntry& entry)
{
    if (S_ISDIR(entry.mode))
        return QStringLiteral("browser/1/folder.png");
    if (S_ISLNK(entry.mode))
        return QStringLiteral("browser/1/file_link.png");
    if (!S_ISREG(entry.mode))
        return QStringLiteral("browser/1/device.png");
    const QString extension = extensionOf(decodeName(entry.formerName()));
    // As in the panels the last line for an extension counts.
    const auto found =
        std::find_if(mimes.rbegin(), mimes.rend(),
                     [&extension](const mime_struct& mime) { return mime.ext == extension; });
    return found == mimes.rend() ? QStringLiteral("browser/1/file.png")
                                 : QStringLiteral("mime/1/%1.png").arg(found->icon_num);
}

QByteArrayView nameIn(const TrashEntry& entry)
{
    const QByteArrayView former =
        QByteArrayView(entry.path).sliced(entry.path.lastIndexOf('/') + 1);
    return former.isEmpty() ? QByteArrayView(entry.name) : former;
}

bool isLater(const TrashEntry& one, const TrashEntry& other)
{
    return one.deleted != other.deleted ? one.deleted > other.deleted : nameIn(one) < nameIn(other);
}

} // namespace

TrashPage::TrashPage() : EntryPage(SafeTexts::instance().trash)
{
    connect(this, &EntryPage::chosen, this, &TrashPage::openMenu);
    connect(this, &EntryPage::leftPressed, this, &TrashPage::openMenu);
}

void TrashPage::setEntries(const QList<TrashEntry>& entries)
{
    int row = currentRow();
    const TrashEntry before = row >= 0 ? entries_.at(row) : TrashEntry();
    entries_ = entries;
    std::sort(entries_.begin(), entries_.end(), isLater);
    const auto same =
        std::find_if(entries_.begin(), entries_.end(), [&before](const TrashEntry& entry) {
            return entry.trash == before.trash && entry.name == before.name;
        });
    if (same != entries_.end())
        row = int(same - entries_.begin());
    const bool isEmpty = entries_.isEmpty();
    setEmptyText(isEmpty ? SafeTexts::instance().trashEmpty : QString());
    setRowsLater(int(entries_.size()), isEmpty ? QSize() : pixmapSize(icon(entries_.first())),
                 [this](int number) { return rowFor(entries_.at(number)); });
    list()->setCurrentItem(std::max(row, 0));
    // Without an entry there is nothing to be done.
    setSoftKeys(isEmpty ? QString() : LANG_OPTIONS, LANG_BACK);
}

EntryPage::Row TrashPage::rowFor(const TrashEntry& entry)
{
    const QString folder = formerFolderText(entry);
    return {formerNameText(entry),
            folder + QLatin1Char('\t') + deletedText(entry),
            {folder, entry.bytes >= 0 ? wideSizeText(entry.bytes) : QString()},
            icon(entry),
            Qt::ElideMiddle};
}

const QPixmap& TrashPage::icon(const TrashEntry& entry)
{
    const QString picture = pictureOf(entry);
    auto icon = icons_.find(picture);
    if (icon == icons_.end()) {
        icon = icons_.insert(picture, QPixmap());
        loadPixmap(*icon, work_folder + QStringLiteral("res/img/") + picture);
    }
    return *icon;
}

void TrashPage::makeMenu()
{
    const SafeTexts& texts = SafeTexts::instance();
    menu_ = new ZOptionsMenu(QRect(QPoint(0, 0), QPoint(-1, -1)), this, nullptr, {},
                             ZSkinService::clsOptionsMenu);
    menu_->setFont(font());
    const auto add = [this](Command command, const QString& text, const char* picture) {
        const ZPicture icon =
            ZPicture::fromFile(work_folder + QStringLiteral("res/img/") + QLatin1String(picture));
        menu_->insertItem(QStringLiteral("\t\t\t") + text, nullptr, icon, true, command, command);
        menu_->connectItem(command, this, "takeCommand()");
    };
    add(Restore, texts.restore, "restore.png");
    add(DeleteForGood, texts.deleteForGood, "delete.png");
    add(Empty, texts.emptyTrash, "delete.png");
    add(Properties, LANG_PROPERTIES, "props.png");
}

void TrashPage::openMenu()
{
    if (entries_.isEmpty())
        return;
    if (menu_ == nullptr)
        makeMenu();
    menu_->show();
}

void TrashPage::takeCommand()
{
    emit commanded(menu_->getActiveItemId());
}

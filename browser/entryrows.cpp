#include "browser/entryrows.h"

#include "assoc/mimetable.h"
#include "browser/filebrowserftab.h"
#include "files/entrytexts.h"
#include "platform/zpixmap.h"
#include "shell/settings.h"

#include <ctime>
#include <utility>

namespace
{

const char* const KindPictures[] = {"folder", "folder_link", "file", "file_link", "device"};

} // namespace

// Days begin when a quarter of an hour of the local clock does, so within one the date is the same,
// whatever the time zone.
QString DateTexts::of(qint64 seconds)
{
    if (seconds >= from_ && seconds < until_)
        return date_;
    const std::time_t time = seconds;
    std::tm local{};
    if (localtime_r(&time, &local) == nullptr)
        return {};
    constexpr int QuarterHour = 15 * 60;
    from_ = seconds - (local.tm_min * 60 + local.tm_sec) % QuarterHour;
    until_ = from_ + QuarterHour;
    date_ = dateText(seconds);
    return date_;
}

EntryRows::EntryRows(FolderScan&& scan, int iconSet, QString format)
    : scan_(std::move(scan)), iconSet_(iconSet), format_(std::move(format))
{
    for (const mime_struct& mime : mimes)
        iconNumbers_.insert(mime.ext, mime.icon_num);
}

int EntryRows::count(bool dirsOnly) const
{
    return dirsOnly ? int(scan_.folders().size()) : scan_.count();
}

QString EntryRows::name(int number)
{
    return scan_.name(scan_.entry(number));
}

QByteArrayView EntryRows::nameBytes(int number)
{
    return scan_.nameBytes(scan_.entry(number));
}

bool EntryRows::isDetailed(int number)
{
    if (iconSet_ == 0)
        return false;
    FolderEntry& entry = scan_.entry(number);
    scan_.readInfo(entry);
    return entry.hasInfo;
}

bool EntryRows::isAnyDetailed(int rows)
{
    // Where the last one tells nothing, mostly none does, since the folder lets nobody search it,
    // or is gone; asking each of a big folder would take long.
    for (int number = rows - 1; number >= 0; --number) {
        if (isDetailed(number))
            return true;
        if (number == rows - 1 && !scan_.isSearchable())
            return false;
    }
    return false;
}

QSize EntryRows::iconSize(int rows)
{
    std::array<bool, 5> seen{};
    QSize size(0, 0);
    for (int number = 0; number < rows; ++number) {
        const EntryKind kind = scan_.entry(number).kind;
        if (!std::exchange(seen.at(size_t(kind)), true))
            size = size.expandedTo(pixmapSize(kindIcon(kind)));
    }
    return size;
}

ZListBoxItem* EntryRows::makeRow(ZListBox* box, int number)
{
    const FolderEntry& entry = scan_.entry(number);
    const QString name = scan_.name(entry);
    auto* row = new ZListBoxItem(box, format_);
    row->setPixmap(0, entry.kind == EntryKind::File ? fileIcon(name) : kindIcon(entry.kind));
    row->appendSubItem(1, name, false);
    if (isDetailed(number))
        row->appendSubItem(1, detail(entry), false);
    return row;
}

QString EntryRows::detail(const FolderEntry& entry)
{
    const QString date = dates_.of(entry.modified);
    if (entry.kind == EntryKind::Other || entry.isFolder())
        return date;
    // Sizes are 32-bit numbers, as the phone's were, unless they are to be right.
    const QString size = extras.safe ? wideSizeText(entry.size) : sizeText(quint32(entry.size));
    return size + QStringLiteral("\t\t\t") + date;
}

const QPixmap& EntryRows::kindIcon(EntryKind kind)
{
    std::optional<QPixmap>& icon = kindIcons_.at(size_t(kind));
    if (icon)
        return *icon;
    const QString path = work_folder + QStringLiteral("res/img/browser/%1/%2.png")
                                           .arg(iconSet_)
                                           .arg(QLatin1String(KindPictures[size_t(kind)]));
    icon.emplace();
    if (kind == EntryKind::Other)
        loadPixmap(*icon, path);
    else
        FileBrowserFtab::loadPic(*icon, path);
    return *icon;
}

const QPixmap& EntryRows::fileIcon(const QString& name)
{
    const auto number = iconNumbers_.constFind(extensionOf(name));
    if (number == iconNumbers_.constEnd())
        return kindIcon(EntryKind::File);
    auto icon = icons_.find(*number);
    if (icon == icons_.end()) {
        icon = icons_.insert(*number, QPixmap());
        const QString picture = QStringLiteral("res/img/mime/%1/%2.png");
        loadPixmap(*icon, work_folder + picture.arg(iconSet_).arg(*number));
    }
    return *icon;
}

// The rows of a directory panel.

#include "browser/filebrowserftab.h"

#include "assoc/mimetable.h"
#include "files/entry.h"
#include "files/entrytexts.h"
#include "files/folderscan.h"
#include "platform/zpixmap.h"
#include "shell/settings.h"

#include <QDebug>

#include <array>
#include <ctime>
#include <optional>

/// What lives while a list is filled.
struct FileBrowserFtab::Listing {
    const FolderScan* scan = nullptr;
    QFont font;
    int fontSize = 0; ///< pixels; of the row built last, as fonts hold for the whole list
    std::array<QPixmap, 5> kindIcons; ///< by EntryKind
    QHash<QString, int> iconNumbers;  ///< by extension, where the table's last entry counts
    QHash<int, QPixmap> icons;        ///< those read so far
    qint64 dateFrom = 0;              ///< from this second until that one the date is known
    qint64 dateUntil = 0;
    QString date;

    /// Days begin when a quarter of an hour of the local clock does, so within one the date is the
    /// same, whatever the time zone.
    QString dateOf(qint64 seconds)
    {
        if (seconds >= dateFrom && seconds < dateUntil)
            return date;
        const std::time_t time = seconds;
        std::tm local{};
        if (localtime_r(&time, &local) == nullptr)
            return {};
        constexpr int QuarterHour = 15 * 60;
        dateFrom = seconds - (local.tm_min * 60 + local.tm_sec) % QuarterHour;
        dateUntil = dateFrom + QuarterHour;
        date = dateText(seconds);
        return date;
    }
};

namespace
{

constexpr int PlainFontSize = 15;
constexpr int DetailFontSize = 13;

} // namespace

void FileBrowserFtab::setDir(const QString& path, int index)
{
    // The argument may be a field that this function changes.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QString folder = path;
    restartPreview();
    Listing listing;
    listing.font = font();
    clear();
    // Until a row is current; of a folder that cannot be listed none ever is.
    curFile = QString();
    qDebug().nospace().noquote() << "fb::set path " << folder;
    // What is listed is what the rows' paths, made from the canonical one, lead to.
    const QString canonical = canonicalPath(folder);
    const std::optional<FolderScan> scan =
        canonical.isEmpty() ? std::nullopt : FolderScan::read(canonical, fullInfo == 1);
    if (!scan)
        return;
    listing.scan = &*scan;
    for (const mime_struct& mime : mimes)
        listing.iconNumbers.insert(mime.ext, mime.icon_num);
    curPath = canonical;
    loadKindIcons(listing);
    addFolders(listing);
    if (!dirsOnly)
        addOthers(listing);
    applyFonts(listing);
    if (curPath != QLatin1String("/") && curPath != QLatin1String("//") && curPath.size() > 1)
        addBackEntry();
    setCurrentItem(index);
}

QString FileBrowserFtab::iconPath(const char* picture) const
{
    return work_folder + QStringLiteral("res/img/browser/%1/").arg(fullInfo) +
           QLatin1String(picture);
}

void FileBrowserFtab::loadKindIcons(Listing& listing) const
{
    const auto icon = [&listing](EntryKind kind) -> QPixmap& {
        return listing.kindIcons.at(size_t(kind));
    };
    loadPic(icon(EntryKind::Folder), iconPath("folder.png"));
    loadPic(icon(EntryKind::FolderLink), iconPath("folder_link.png"));
    loadPic(icon(EntryKind::File), iconPath("file.png"));
    loadPic(icon(EntryKind::FileLink), iconPath("file_link.png"));
    loadPixmap(icon(EntryKind::Other), iconPath("device.png"));
}

void FileBrowserFtab::addRow(Listing& listing, const QString& name, const FolderEntry& entry,
                             const QString& detail)
{
    auto* row = new ZListBoxItem(this, itemFormat);
    row->setPixmap(0, rowIcon);
    row->appendSubItem(1, name, false);
    listing.fontSize = PlainFontSize;
    if (fullInfo == 1 && entry.hasInfo) {
        row->appendSubItem(1, detail, false);
        listing.fontSize = DetailFontSize;
    }
    insertItem(row, -1, true);
}

void FileBrowserFtab::addFolders(Listing& listing)
{
    for (const FolderEntry& entry : listing.scan->folders()) {
        rowIcon = listing.kindIcons.at(size_t(entry.kind));
        addRow(listing, listing.scan->name(entry), entry,
               fullInfo == 1 ? listing.dateOf(entry.modified) : QString());
    }
}

void FileBrowserFtab::addOthers(Listing& listing)
{
    for (const FolderEntry& entry : listing.scan->others()) {
        const QString name = listing.scan->name(entry);
        rowIcon = entry.kind == EntryKind::File ? fileIcon(listing, name)
                                                : listing.kindIcons.at(size_t(entry.kind));
        QString detail;
        if (fullInfo == 1) {
            // Sizes are 32-bit numbers, as the phone's were.
            if (entry.kind != EntryKind::Other)
                detail = sizeText(quint32(entry.size)) + QStringLiteral("\t\t\t");
            detail += listing.dateOf(entry.modified);
        }
        addRow(listing, name, entry, detail);
    }
}

QPixmap FileBrowserFtab::fileIcon(Listing& listing, const QString& name)
{
    const auto number = listing.iconNumbers.constFind(get_Mime(name));
    if (number == listing.iconNumbers.constEnd())
        return listing.kindIcons.at(size_t(EntryKind::File));
    auto icon = listing.icons.find(*number);
    if (icon == listing.icons.end()) {
        QPixmap loaded;
        loadPixmap(loaded, work_folder +
                               QStringLiteral("res/img/mime/%1/%2.png").arg(fullInfo).arg(*number));
        icon = listing.icons.insert(*number, loaded);
    }
    return *icon;
}

void FileBrowserFtab::applyFonts(const Listing& listing)
{
    if (listing.fontSize == 0)
        return;
    constexpr int TextRegion = 2;
    QFont rowFont = listing.font;
    rowFont.setPixelSize(listing.fontSize);
    setItemFont(TextRegion, rowFont, true);
    setItemFont(TextRegion, rowFont, false);
}

void FileBrowserFtab::addBackEntry()
{
    auto* row = new ZListBoxItem(this, QStringLiteral("%I%M"));
    QPixmap icon;
    loadPixmap(icon, work_folder + QStringLiteral("res/img/back.png"));
    row->setPixmap(0, icon);
    row->appendSubItem(1, QStringLiteral(".."), false);
    if (multiSelect)
        row->setEnabled(false);
    insertItem(row, 0, true);
}

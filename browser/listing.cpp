// Filling a directory panel. Its rows are made when they are first seen, so that a big folder is
// there before the attributes of its entries.

#include "browser/entryrows.h"
#include "browser/filebrowserftab.h"
#include "files/entry.h"
#include "files/folderscan.h"
#include "files/paths.h"
#include "lang/texts.h"
#include "platform/zpixmap.h"
#include "shell/settings.h"

#include <QDebug>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <optional>
#include <utility>

namespace
{

constexpr int PlainFontSize = 15;
constexpr int DetailFontSize = 13;

} // namespace

QString FileBrowserFtab::entryName(int row) const
{
    if (row < 0 || row >= count())
        return {};
    const int number = row - backEntries();
    return number < 0 ? QStringLiteral("..") : entries_->name(number);
}

/// Empty for the back entry: that is no name.
QByteArrayView FileBrowserFtab::entryNameBytes(int row) const
{
    const int number = row - backEntries();
    return number < 0 || row >= count() ? QByteArrayView() : entries_->nameBytes(number);
}

void FileBrowserFtab::setDir(const QString& path, int index)
{
    // The argument may be a field that this function changes.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QString folder = path;
    restartPreview();
    const QFont ownFont = font();
    clear();
    // Until a row is current; of a folder that cannot be listed none ever is.
    curFile = QString();
    qDebug().nospace().noquote() << "fb::set path " << folder;
    // What is listed is what the rows' paths, made from the canonical one, lead to.
    const QString canonical = canonicalPath(folder);
    std::optional<FolderScan> scan =
        canonical.isEmpty() ? std::nullopt : FolderScan::read(canonical, false);
    if (!scan) {
        sayWhyEmpty(LANG_CANNOT_READ);
        return;
    }
    curPath = canonical;
    entries_ = std::make_unique<EntryRows>(std::move(*scan), fullInfo, itemFormat);
    addEntries(ownFont);
    sayWhyEmpty(entries_->count(dirsOnly) == 0 ? LANG_NO_ENTRIES : QString());
    hasBackEntry_ =
        curPath != QLatin1String("/") && curPath != QLatin1String("//") && curPath.size() > 1;
    if (hasBackEntry_)
        addBackEntry();
    sayFolder();
    setCurrentItem(index);
}

void FileBrowserFtab::relistByName(const QStringList& more)
{
    QStringList names;
    for (int row = std::max(currentItem(), 0); row < count(); ++row)
        names.append(entryName(row));
    const QStringList marked = getChkFileList();
    QSet<QString> stay;
    for (const QString& path : marked + more) {
        if (path == curPath + QLatin1Char('/') + namePart(path) && isTaken(path))
            stay.insert(path);
    }
    if (multiSelect ? !marked.isEmpty() && stay.isEmpty() : !stay.isEmpty())
        switchMultiSelect();
    setDir(curPath, curIndex);
    for (int row = 0; row < count() && !stay.isEmpty(); ++row) {
        if (stay.contains(entryPath(row)))
            item(row)->setChecked(true);
    }
    if (const int row = rowOfFirst(names); row >= 0)
        setCurrentItem(row);
}

/// The row of the first of some names that is here; -1 if none is.
int FileBrowserFtab::rowOfFirst(const QStringList& names) const
{
    if (currentItem() >= 0 && !names.isEmpty() && entryName(currentItem()) == names.first())
        return currentItem();
    QHash<QString, int> rows;
    for (int row = 0; row < count(); ++row)
        rows.insert(entryName(row), row);
    for (const QString& name : names) {
        if (const auto row = rows.constFind(name); row != rows.constEnd())
            return *row;
    }
    return -1;
}

/// What the list is called by programs that read the screen.
void FileBrowserFtab::sayFolder()
{
    const QString name = namePart(curPath);
    setAccessibleName(name.isEmpty() ? curPath : name);
}

void FileBrowserFtab::addEntries(const QFont& ownFont)
{
    const int rows = entries_->count(dirsOnly);
    if (rows == 0)
        return;
    // Fonts hold for the whole list, so the last row decides; any row gives all of them two lines.
    applyFonts(ownFont, entries_->isDetailed(rows - 1) ? DetailFontSize : PlainFontSize);
    appendLater(rows, entries_->isAnyDetailed(rows) ? 2 : 1, entries_->iconSize(rows),
                [this](int number) { return entries_->makeRow(this, number); });
}

void FileBrowserFtab::sayWhyEmpty(const QString& text)
{
    setEmptyText(extras.status ? text : QString());
}

void FileBrowserFtab::applyFonts(QFont rowFont, int pixelSize)
{
    constexpr int TextRegion = 2;
    rowFont.setPixelSize(pixelSize);
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

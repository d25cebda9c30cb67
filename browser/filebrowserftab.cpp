#include "browser/filebrowserftab.h"

#include "assoc/mimetable.h"
#include "browser/entryrows.h"
#include "browser/thumbnail.h"
#include "files/entry.h"
#include "files/entrytexts.h"
#include "files/paths.h"
#include "platform/keymap.h"
#include "platform/screenscale.h"
#include "platform/zlistfind.h"
#include "platform/zpixmap.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr int PanelCacheKilobytes = 5120;

} // namespace

FileBrowserFtab::FileBrowserFtab(bool fullInfoMode, const QString& type, QWidget* parent,
                                 unsigned flags, unsigned widgetClass)
    : ZListBox(type, parent, flags, widgetClass),
      previewTimer(new QTimer(this)),
      fullInfo(fullInfoMode ? 1 : 0)
{
    connect(previewTimer, &QTimer::timeout, this, &FileBrowserFtab::LoadPreview);
    connect(this, &ZListBox::highlighted, this, &FileBrowserFtab::itemHighlighted);
    connect(this, &ZListBox::selected, this, &FileBrowserFtab::itemSelected);
    ZPixmapCache::setCacheLimit(PanelCacheKilobytes);
}

FileBrowserFtab::~FileBrowserFtab() = default;

QString FileBrowserFtab::entryPath(int row) const
{
    return curPath + QLatin1Char('/') + entryName(row);
}

void FileBrowserFtab::itemHighlighted(int row)
{
    curFile = entryPath(row);
    curIndex = row;
}

void FileBrowserFtab::itemSelected(int row)
{
    if (multiSelect)
        return;
    const QString path = entryPath(row);
    const EntryInfo info(path);
    if (info.isFolder()) {
        openFolder(path);
    } else if (info.isFile()) {
        curFile = path;
        emit isFilePicked(true);
    }
}

void FileBrowserFtab::openFolder(const QString& path)
{
    clear();
    setDir(path, 0);
    emit isFilePicked(false);
    emit picked(path);
}

int FileBrowserFtab::pageLength()
{
    // The last row is never counted.
    const int end = std::min(topItem() + visibleItems(), count() - 1);
    return std::max(end - topItem(), 0) - 1;
}

void FileBrowserFtab::pageUp()
{
    const int page = pageLength();
    setCurrentItem(currentItem() > page - 1 ? currentItem() - page : 0);
}

void FileBrowserFtab::pageDown()
{
    const int page = pageLength();
    const int target = currentItem() + page;
    if (currentItem() < count() - page - 1) {
        setBottomItem(target);
        setCurrentItem(target);
    } else {
        setCurrentItem(count() - 1);
    }
}

void FileBrowserFtab::keyPressEvent(QKeyEvent* event)
{
    switch (PhoneKey::code(*event)) {
    case PhoneKey::PageUp:
        pageUp();
        break;
    case PhoneKey::PageDown:
        pageDown();
        break;
    case PhoneKey::FolderUp:
        openFolder(curPath + QStringLiteral("/.."));
        break;
    default:
        ZListBox::keyPressEvent(event);
        return;
    }
    event->accept();
}

void FileBrowserFtab::switchMultiSelect()
{
    multiSelect = !multiSelect;
    if (multiSelect)
        itemFormat = fullInfo != 0 ? QStringLiteral("%I%M170%C") : QStringLiteral("%I%M186%C");
    else
        itemFormat = QStringLiteral("%I%M");
}

void FileBrowserFtab::setFullInf()
{
    fullInfo = fullInfo == 0 ? 1 : 0;
    if (multiSelect)
        itemFormat = fullInfo == 1 ? QStringLiteral("%I%M170%C") : QStringLiteral("%I%M186%C");
}

void FileBrowserFtab::enableFinding(std::function<bool()> digitsAreTaken)
{
    auto* find = new ZListFind(this, [this](int row) { return entryNameBytes(row); });
    find->setDigitsAreTaken(std::move(digitsAreTaken));
}

QStringList FileBrowserFtab::getChkFileList() const
{
    QStringList paths;
    for (int row = 0; row < count(); ++row) {
        if (itemChecked(row))
            paths.append(entryPath(row));
    }
    return paths;
}

void FileBrowserFtab::restartPreview()
{
    if (previewIndex > 0)
        previewTimer->stop();
    previewIdle = true;
    previewIndex = 0;
    constexpr int TickMilliseconds = 50;
    if (fullInfo == 1)
        previewTimer->start(TickMilliseconds);
}

void FileBrowserFtab::LoadPreview()
{
    if (previewIndex < count() - 1)
        ++previewIndex;
    else
        previewTimer->stop();
    if (!previewIdle)
        return;
    previewIdle = false;
    const int row = previewIndex;
    // By its name alone: asking for a row would make it.
    if (fullInfo == 1 && row < count()) {
        const QString extension = get_Mime(entryName(row));
        const bool picture =
            std::any_of(mimes.begin(), mimes.end(), [&extension](const mime_struct& mime) {
                return mime.icon_num == PictureIcon && mime.ext == extension;
            });
        if (picture)
            showPreview(row, entryPath(row));
    }
    previewIdle = true;
}

void FileBrowserFtab::showPreview(int row, const QString& path)
{
    QPixmap preview;
    if (!ZPixmapCache::find(path, preview)) {
        preview = QPixmap::fromImage(readThumbnail(path, ScreenScale::density()));
        // A failure is kept too: a broken file is not read again at each listing.
        ZPixmapCache::insert(path, preview);
    }
    // What is no picture after all keeps the icon of its kind.
    if (!preview.isNull())
        item(row)->setPixmap(0, preview);
}

bool FileBrowserFtab::makedir(const QString& parent, const QString& name)
{
    if (parent.isEmpty() || name.isEmpty())
        return false;
    // A name that begins with "/" is no path of its own.
    return makeFolder(parent + QLatin1Char('/') + name);
}

QString FileBrowserFtab::getProgramDir(const QString& path)
{
    return folderPart(path);
}

void FileBrowserFtab::loadPic(QPixmap& pixmap, const QString& path)
{
    if (ZPixmapCache::find(path, pixmap))
        return;
    pixmap = QPixmap();
    loadPixmap(pixmap, path);
    ZPixmapCache::insert(path, pixmap);
}

QString FileBrowserFtab::get_Mime(const QString& name)
{
    return extensionOf(name);
}

QString FileBrowserFtab::fDate(const QDateTime& stamp)
{
    return dateText(stamp.date().day(), stamp.date().month(), stamp.date().year());
}

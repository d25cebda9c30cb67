#include "tests/browser/panelfixture.h"

#include "browser/filebrowserftab.h"
#include "platform/zmainwidget.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "shell/settings.h"

#include <QDir>
#include <QTest>
#include <QVBoxLayout>

namespace
{

/// The drawn pictures, whose number gives the colour.
QStringList drawn;

QRgb colourOf(qsizetype number)
{
    return qRgb(int(40 + number * 5), int(200 - number * 3), int(number));
}

} // namespace

PanelFixture::PanelFixture(bool fullInfo)
{
    ZPixmapCache::clear();
    mimes.clear();
    mime_nums = 0;
    drawn.clear();
    work_folder = workFolder_.path() + QLatin1Char('/');
    drawIcon(QStringLiteral("back.png"));
    for (const char* mode : {"0", "1"}) {
        for (const char* kind : {"folder", "folder_link", "file", "file_link", "device"})
            drawIcon(
                QStringLiteral("browser/%1/%2.png").arg(QLatin1String(mode), QLatin1String(kind)));
    }
    window_ =
        std::make_unique<ZMainWidget>(ZMainWidget::TitleLeft, nullptr, "window", Qt::WindowFlags());
    panel_ = new FileBrowserFtab(fullInfo, QStringLiteral("%I%M"), window_.get(), 0,
                                 ZSkinService::clsListBox);
    window_->contentLayout()->addWidget(panel_);
    window_->show();
    panel_->setFocus();
    QCoreApplication::processEvents();
}

PanelFixture::~PanelFixture()
{
    mimes.clear();
    mime_nums = 0;
    ZPixmapCache::clear();
}

void PanelFixture::drawIcon(const QString& name) const
{
    const QString path = workFolder_.path(QStringLiteral("res/img/") + name);
    QVERIFY(QDir().mkpath(path.left(path.lastIndexOf(QLatin1Char('/')))));
    QImage square(IconSide, IconSide, QImage::Format_RGB32);
    square.fill(colourOf(drawn.size()));
    QVERIFY2(square.save(path, "PNG"), qPrintable(path));
    drawn.append(name);
}

void PanelFixture::associate(const QString& extension, int icon, bool isDrawn) const
{
    mimes.push_back({extension, 1, icon});
    mime_nums = int(mimes.size());
    for (const int mode : {0, 1}) {
        const QString name = QStringLiteral("mime/%1/%2.png").arg(mode).arg(icon);
        if (isDrawn && !drawn.contains(name))
            drawIcon(name);
    }
}

void PanelFixture::makeFiles(int count) const
{
    for (int i = 0; i < count; ++i)
        files_.write(QStringLiteral("f%1").arg(i, 4, 10, QLatin1Char('0')));
}

QTimer* PanelFixture::previewTimer() const
{
    return panel_->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
}

QStringList PanelFixture::names() const
{
    QStringList names;
    for (int row = 0; row < panel_->count(); ++row)
        names.append(panel_->item(row)->getSubItemText(1, 0));
    return names;
}

bool PanelFixture::fieldsFollow() const
{
    const int row = panel_->currentItem();
    return panel_->curIndex == row &&
           panel_->curFile == panel_->curPath + QLatin1Char('/') + names().value(row);
}

int PanelFixture::row(const QString& name) const
{
    return int(names().indexOf(name));
}

QString PanelFixture::detail(const QString& name) const
{
    const ZListBoxItem* item = panel_->item(row(name));
    return item != nullptr ? item->getSubItemText(1, 1) : QString();
}

QString PanelFixture::icon(const QString& name) const
{
    const ZListBoxItem* item = panel_->item(row(name));
    if (item == nullptr || item->pixmap(0).isNull())
        return QStringLiteral("none");
    const QImage picture = item->pixmap(0).toImage();
    for (qsizetype number = 0; number < drawn.size(); ++number) {
        if (picture.pixel(0, 0) == colourOf(number) && picture.width() == IconSide)
            return drawn.at(number);
    }
    return QStringLiteral("other");
}

PanelSignals::PanelSignals(const PanelFixture& fixture)
{
    const FileBrowserFtab* panel = fixture.panel();
    // Shared: the panel may outlive this recorder.
    const auto record = [panel, told = told_, folders = folders_](const QString& signal) {
        told->append(signal);
        folders->append(panel->curPath);
    };
    QObject::connect(panel, &FileBrowserFtab::isFilePicked, panel, [record](bool file) {
        record(file ? QStringLiteral("isFilePicked(true)") : QStringLiteral("isFilePicked(false)"));
    });
    QObject::connect(panel, &FileBrowserFtab::picked, panel, [record](const QString& path) {
        record(QStringLiteral("picked(%1)").arg(path));
    });
}

#include "tools/sys_gui/box.h"

#include "files/entrytexts.h"
#include "files/paths.h"
#include "files/programnames.h"
#include "platform/keymap.h"
#include "platform/qdiskfont.h"
#include "platform/zpixmap.h"
#include "widgets/boxparts.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace
{

constexpr int Percent = 100;

/// How much of the whole is done, from 0 to 100; 0 if the whole is not known.
int percentage(const MoveProgress& progress)
{
    if (progress.bytesTotal <= 0)
        return 0;
    const double part = double(progress.bytesDone) / double(progress.bytesTotal);
    return std::clamp(int(part * Percent), 0, Percent);
}

} // namespace

MoveBox::MoveBox(const QString& title, const QString& text, const QString& icon) : BoxFrame(title)
{
    QPixmap picture;
    loadPixmap(picture, icon);
    setIcon(picture);
    setText(text);
    fit(Box::ProgressHeight);
}

void MoveBox::addFont(const QString& icon)
{
    QDiskFont font;
    font.factory = ZFontManager::firstFactory();
    font.name = ProgramNames::Font;
    font.file = folderPart(icon) + QStringLiteral("../font.ttf");
    ZFontManager::addDiskFont(font);
}

void MoveBox::showProgress(const MoveProgress& progress)
{
    if (progress.bytesDone == progress_.bytesDone && progress.bytesTotal == progress_.bytesTotal)
        return;
    progress_ = progress;
    update();
}

void MoveBox::showFailure(const QString& message)
{
    hasFailed_ = true;
    setText(message);
    fit(0);
}

void MoveBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawUpToText(painter);
    if (!hasFailed_)
        Box::drawProgress(painter, textFont(), textEnd(), percentage(progress_), progressText());
}

QString MoveBox::progressText() const
{
    if (progress_.bytesTotal <= 0)
        return {};
    return QStringLiteral("%1%  %2 of %3")
        .arg(QString::number(percentage(progress_)), sizeText(double(progress_.bytesDone)),
             sizeText(double(progress_.bytesTotal)));
}

void MoveBox::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    // A key that is still held from before, or one that scrolled a list, must not close it.
    if (hasFailed_ && !event->isAutoRepeat() && !PhoneKey::isArrow(PhoneKey::code(*event)))
        emit closed();
}

void MoveBox::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    if (hasFailed_ && rect().contains(event->position().toPoint()))
        emit closed();
}

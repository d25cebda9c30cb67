#include "tools/sys_gui/box.h"

#include "files/entrytexts.h"
#include "files/paths.h"
#include "files/programnames.h"
#include "platform/keymap.h"
#include "platform/qdiskfont.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
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

MoveBox::MoveBox(const QString& title, const QString& text, const QString& icon)
    : QWidget(ZScreen::instance()),
      titleFont_(Box::titleFont()),
      textFont_(Box::textFont()),
      title_(Box::linesOf(title, titleFont_)),
      text_(Box::linesOf(text, textFont_))
{
    hide();
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    loadPixmap(icon_, icon);
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
    place();
}

void MoveBox::addFont(const QString& icon)
{
    QDiskFont font;
    font.factory = ZFontManager::firstFactory();
    font.name = ProgramNames::Font;
    font.file = folderPart(icon) + QStringLiteral("../font.ttf");
    ZFontManager::addDiskFont(font);
}

void MoveBox::place()
{
    setGeometry(Box::geometry(pixmapSize(icon_).height() + Box::blockHeight(title_, titleFont_) +
                              Box::blockHeight(text_, textFont_) +
                              (hasFailed_ ? 0 : Box::ProgressHeight)));
    update();
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
    text_ = Box::linesOf(message, textFont_);
    place();
}

void MoveBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    const QSize icon = pixmapSize(icon_);
    drawPicture(painter, {(Box::Width - icon.width()) / 2, Box::Gap}, icon_);
    painter.setPen(Qt::white);
    const int top =
        Box::drawLines(painter, titleFont_, title_, icon.height() + Box::Gap, Qt::AlignHCenter);
    const int height = Box::blockHeight(text_, textFont_);
    Box::drawGround(painter, top, height);
    Box::drawLines(painter, textFont_, text_, top + Box::Gap, Qt::AlignHCenter);
    if (!hasFailed_)
        Box::drawProgress(painter, textFont_, top + height, percentage(progress_), progressText());
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

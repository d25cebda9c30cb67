#include "tools/sys_gui/box.h"

#include "files/entrytexts.h"
#include "files/paths.h"
#include "files/programnames.h"
#include "platform/keymap.h"
#include "platform/qdiskfont.h"
#include "platform/shownname.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "widgets/wordwrap.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace
{

constexpr int Gap = 4;
constexpr int TextLeft = 5;
constexpr int TextWidth = 210;
constexpr int BarHeight = 10;
constexpr int BarBlockHeight = 36;
// What has room on the screen below the title, however long the name in a message is.
constexpr qsizetype MaxLines = 10;
constexpr int Percent = 100;

/// How much of the whole is done, from 0 to 100; 0 if the whole is not known.
int percentage(const MoveProgress& progress)
{
    if (progress.bytesTotal <= 0)
        return 0;
    const double part = double(progress.bytesDone) / double(progress.bytesTotal);
    return std::clamp(int(part * Percent), 0, Percent);
}

/// A filled rectangle whose outline lies inside it.
void drawGround(QPainter& painter, int top, int height)
{
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    painter.drawRect(0, top, MoveBox::BoxWidth - 1, height - 1);
}

} // namespace

MoveBox::MoveBox(const QString& title, const QString& text, const QString& icon)
    : QWidget(ZScreen::instance()),
      title_(block(title, ZSkinService::font(ProgramNames::Font, 15, 87))),
      text_(block(text, ZSkinService::font(ProgramNames::Font, 13, 25)))
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

MoveBox::Block MoveBox::block(const QString& text, const QFont& font)
{
    const QFontMetrics metrics(font);
    Block result{font, {}, metrics.height(), Gap};
    result.lines =
        wrapWords(withMarks(text), TextWidth - metrics.maxWidth(), [&metrics](char32_t character) {
            return metrics.horizontalAdvance(QString::fromUcs4(&character, 1));
        });
    if (result.lines.size() > MaxLines)
        result.lines.resize(MaxLines);
    result.height += int(result.lines.size()) * (result.lineHeight + Gap);
    return result;
}

void MoveBox::place()
{
    const int height = pixmapSize(icon_).height() + title_.height + text_.height +
                       (hasFailed_ ? 0 : BarBlockHeight);
    setGeometry(BoxLeft, (ZScreen::Height - height) / 2, BoxWidth, height);
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
    text_ = block(message, text_.font);
    place();
}

void MoveBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    const QSize icon = pixmapSize(icon_);
    painter.drawPixmap((BoxWidth - icon.width()) / 2, Gap, icon_);
    painter.setPen(Qt::white);
    drawLines(painter, title_, icon.height());
    const int top = icon.height() + title_.height;
    drawGround(painter, top, text_.height);
    drawLines(painter, text_, top);
    if (!hasFailed_)
        drawProgress(painter, top + text_.height);
}

void MoveBox::drawLines(QPainter& painter, const Block& block, int top)
{
    painter.setFont(block.font);
    int y = top + Gap;
    for (const QString& line : block.lines) {
        painter.drawText(TextLeft, y, TextWidth, block.lineHeight, Qt::AlignHCenter, line);
        y += block.lineHeight + Gap;
    }
}

QString MoveBox::progressText() const
{
    if (progress_.bytesTotal <= 0)
        return {};
    return QStringLiteral("%1%  %2 of %3")
        .arg(QString::number(percentage(progress_)), sizeText(double(progress_.bytesDone)),
             sizeText(double(progress_.bytesTotal)));
}

void MoveBox::drawProgress(QPainter& painter, int top) const
{
    // One block with the text above it: no line between them.
    drawGround(painter, top - 1, BarBlockHeight + 1);
    painter.fillRect(1, top - 1, BoxWidth - 2, 1, Qt::white);
    painter.drawRect(TextLeft, top, TextWidth - 1, BarHeight - 1);
    const int filled = (TextWidth - 2) * percentage(progress_) / Percent;
    painter.fillRect(TextLeft + 1, top + 1, filled, BarHeight - 2,
                     ZSkinService::look(ZSkinService::clsListBox).highlight);
    painter.setFont(text_.font);
    const int textTop = top + BarHeight;
    painter.drawText(TextLeft, textTop, TextWidth, BarBlockHeight - BarHeight, Qt::AlignCenter,
                     progressText());
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

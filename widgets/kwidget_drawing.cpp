// How the blocks of a box are drawn.

#include "lang/texts.h"
#include "platform/shownname.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "shell/settings.h"
#include "widgets/kwidget.h"
#include "widgets/wordwrap.h"

#include <QFontMetrics>
#include <QPainter>

#include <cmath>

namespace
{

const QLatin1String Rule("<hr>");
constexpr int LineGap = 4;
constexpr int BlockGap = 4;

QFont boxFont(int points, int weight)
{
    return ZSkinService::font(QStringLiteral("ZarnikFont"), points, weight);
}

QPixmap blackCanvas(int height, qreal density)
{
    QPixmap canvas(
        QSize(int(std::ceil(kWidget::BoxWidth * density)), int(std::ceil(height * density))));
    canvas.setDevicePixelRatio(density);
    // The title's ground reaches under its icon, which its own rectangle does not.
    canvas.fill(Qt::black);
    return canvas;
}

/// A filled rectangle whose outline lies inside it.
void drawBlock(QPainter& painter, int top, int height)
{
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    painter.drawRect(0, top, kWidget::BoxWidth - 1, height - 1);
}

} // namespace

void kWidget::drawAll()
{
    y = 0;
    canvas = blackCanvas(ZScreen::Height, devicePixelRatio());
    drawTitle(content.title, content.icon);
    if (!content.process || !content.text.isEmpty())
        drawText(content.text, content.align);
    if (content.process) {
        drawAniIcon();
        if (!content.below.isEmpty())
            drawText(content.below, content.alignBelow);
    }
    if (content.keyBar != NoKeys)
        drawSoftKeys(content.keyBar);
}

/// The quick way for a progress text, of which only what stands behind its last rule changes and
/// which ends the box. False if more has changed.
bool kWidget::redrawLastSection()
{
    const qsizetype last = content.text.lastIndexOf(Rule) + Rule.size();
    const auto same = [last](const Content& left, const Content& right) {
        return left.title == right.title && left.icon == right.icon && left.align == right.align &&
               !left.process && !right.process && left.keyBar == NoKeys && right.keyBar == NoKeys &&
               left.text.lastIndexOf(Rule) + Rule.size() == last &&
               QStringView(left.text).left(last) == QStringView(right.text).left(last);
    };
    if (last < Rule.size() || y == 0 || !same(composed, content))
        return false;
    blockFont = boxFont(13, 25);
    setText(content.text.mid(last));
    if (lines.size() != lastSectionLines)
        return false;
    QPainter painter(&canvas);
    painter.setFont(blockFont);
    const int end = y;
    y = lastSectionTop;
    // The outline around it stays.
    painter.fillRect(1, y, BoxWidth - 2, end - y - 1, Qt::white);
    painter.setPen(Qt::black);
    drawLines(painter, content.align);
    return true;
}

/// Makes the canvas high enough. A text may need more than the screen is high.
void kWidget::reserve(int height)
{
    if (pixmapSize(canvas).height() >= height && canvas.devicePixelRatio() == devicePixelRatio())
        return;
    QPixmap larger = blackCanvas(std::max(height, int(ZScreen::Height)), devicePixelRatio());
    QPainter(&larger).drawPixmap(0, 0, canvas);
    canvas = larger;
}

void kWidget::setText(const QString& text)
{
    const QFontMetrics metrics(blockFont);
    lineHeight = metrics.height();
    lines = wrapWords(withMarks(text), TextWidth - metrics.maxWidth(),
                      [this](char32_t character) { return advanceOf(character); });
}

/// Measuring a character lays out a text; progress texts come many times a second.
int kWidget::advanceOf(char32_t character)
{
    // Titles and texts differ in size.
    const auto key = std::make_pair(blockFont.pixelSize(), character);
    const auto known = advances.constFind(key);
    if (known != advances.constEnd())
        return *known;
    const int advance = QFontMetrics(blockFont).horizontalAdvance(QString::fromUcs4(&character, 1));
    advances.insert(key, advance);
    return advance;
}

void kWidget::drawLines(QPainter& painter, int align)
{
    for (const QString& line : std::as_const(lines)) {
        painter.drawText(TextLeft, y, TextWidth, lineHeight, align, line);
        y += lineHeight + LineGap;
    }
}

void kWidget::drawTitle(const QString& title, const QString& icon)
{
    blockFont = boxFont(15, 87);
    setText(title);
    if (icon != composed.icon)
        titleIcon = QPixmap();
    if (!icon.isEmpty() && titleIcon.isNull())
        loadPixmap(titleIcon, work_folder + icon);
    const QSize size = pixmapSize(titleIcon);
    const int linesHeight = int(lines.size()) * (lineHeight + LineGap);
    reserve(y + BlockGap + size.height() + linesHeight);
    QPainter painter(&canvas);
    painter.fillRect(0, y, BoxWidth, linesHeight + BlockGap, Qt::black);
    // Beyond that rectangle the canvas may hold what an earlier box left.
    painter.fillRect(0, y + linesHeight + BlockGap, BoxWidth, size.height(), Qt::black);
    y += BlockGap;
    painter.drawPixmap((BoxWidth - size.width()) / 2, y, titleIcon);
    y += size.height();
    painter.setFont(blockFont);
    painter.setPen(Qt::white);
    drawLines(painter, Qt::AlignHCenter);
}

void kWidget::drawText(const QString& text, int align)
{
    blockFont = boxFont(13, 25);
    const QStringList sections = text.split(Rule);
    const int rules = int(sections.size()) - 1;
    // Each section wraps on its own, so a rule ends a line in the count as it does on screen.
    QList<QStringList> wrapped;
    int lineCount = 0;
    for (const QString& section : sections) {
        setText(section);
        wrapped.append(lines);
        lineCount += int(lines.size());
    }
    const int height = (rules + lineCount) * (lineHeight + LineGap) + BlockGap;
    reserve(y + height + rules * BlockGap);
    QPainter painter(&canvas);
    drawBlock(painter, y, height);
    painter.setFont(blockFont);
    y += BlockGap;
    for (int i = 0; i <= rules; ++i) {
        lines = wrapped.at(i);
        lastSectionTop = y;
        lastSectionLines = lines.size();
        drawLines(painter, align);
        if (i == rules)
            break;
        painter.drawLine(TextLeft, y, TextWidth, y);
        y += BlockGap;
    }
    // With rules the block reserves more room than is used; its outline closes where it ends.
    painter.drawLine(0, y - 1, BoxWidth - 1, y - 1);
}

void kWidget::drawSoftKeys(int kind)
{
    blockFont = boxFont(13, 25);
    reserve(y + KeyBarHeight);
    QPainter painter(&canvas);
    painter.fillRect(0, y, BoxWidth, KeyBarHeight, Qt::black);
    painter.setFont(blockFont);
    painter.setPen(Qt::white);
    if (kind == YesNo) {
        painter.drawText(0, y, BoxWidth / 2, KeyBarHeight, Qt::AlignCenter, LANG_YES);
        painter.drawText(BoxWidth / 2, y, BoxWidth / 2, KeyBarHeight, Qt::AlignCenter, LANG_NO);
    } else {
        painter.drawText(0, y, BoxWidth, KeyBarHeight, Qt::AlignCenter, LANG_CANCEL);
    }
    y += KeyBarHeight;
}

QString kWidget::framePath(int frame)
{
    return work_folder + QStringLiteral("res/img/process/%1.png").arg(frame);
}

void kWidget::drawAniIcon()
{
    aniY = y;
    const int frameHeight = pixmapSize(aniFrame).height();
    reserve(y + frameHeight + 6);
    QPainter painter(&canvas);
    drawBlock(painter, y - 1, frameHeight + 6);
    painter.drawPixmap(frameRect().topLeft(), aniFrame);
    y += frameHeight + BlockGap;
}

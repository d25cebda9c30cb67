// How the blocks of a box are drawn.

#include "lang/texts.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "shell/settings.h"
#include "widgets/kwidget.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{

const QLatin1String Rule("<hr>");
constexpr int BlockGap = 4;

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
    const bool titleStands = titleBottom > 0 && content.title == composed.title &&
                             content.icon == composed.icon &&
                             canvas.devicePixelRatio() == devicePixelRatio();
    y = titleBottom;
    if (!titleStands) {
        y = 0;
        canvas = blackCanvas(ZScreen::Height, devicePixelRatio());
        drawTitle(content.title, content.icon);
        titleBottom = y;
    }
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

/// The quick way for progress texts, of which only some lines change: draws those alone and returns
/// where they are, or at least the last line. Empty if more has changed.
QRegion kWidget::redrawLines()
{
    if (sections.isEmpty() || content.process || composed.process ||
        content.title != composed.title || content.icon != composed.icon ||
        content.align != composed.align || content.keyBar != composed.keyBar ||
        canvas.devicePixelRatio() != devicePixelRatio())
        return {};
    const Section& last = sections.constLast();
    const QRegion lastLine = lineRect(last, last.lines.texts.size() - 1);
    if (content.text == composed.text)
        return lastLine;
    const QList<Section> next = sectionsOf(content.text);
    const auto alike = [](const Section& left, const Section& right) {
        return left.lines.texts.size() == right.lines.texts.size() &&
               (left.text == right.text || (left.lines.contained && right.lines.contained));
    };
    if (!std::equal(next.begin(), next.end(), sections.begin(), sections.end(), alike))
        return {};
    const QRegion changed = drawChangedLines(next);
    return changed.isEmpty() ? lastLine : changed;
}

QRegion kWidget::drawChangedLines(const QList<Section>& next)
{
    QRegion changed;
    QPainter painter(&canvas);
    painter.setFont(textFont.font());
    painter.setPen(Qt::black);
    for (qsizetype i = 0; i < next.size(); ++i) {
        const Section before = std::exchange(sections[i], next.at(i));
        sections[i].top = before.top;
        for (qsizetype line = 0; line < before.lines.texts.size(); ++line) {
            const QString& text = next.at(i).lines.texts.at(line);
            if (text == before.lines.texts.at(line))
                continue;
            const QRect place = lineRect(before, line);
            painter.fillRect(place, Qt::white);
            painter.drawText(TextLeft, place.top(), TextWidth, textFont.lineHeight(), content.align,
                             text);
            changed += place;
        }
    }
    return changed;
}

/// Where a line is drawn; the outline is beside it, and may be right below.
QRect kWidget::lineRect(const Section& section, qsizetype line) const
{
    return {1, section.top + int(line) * textFont.pitch(), BoxWidth - 2, textFont.pitch() - 1};
}

/// A text's parts between its rules. Those that it had before need not be wrapped again.
QList<kWidget::Section> kWidget::sectionsOf(const QString& text)
{
    QList<Section> parts;
    for (const QString& part : text.split(Rule)) {
        const qsizetype i = parts.size();
        if (i < sections.size() && sections.at(i).text == part)
            parts.append(sections.at(i));
        else
            parts.append({part, textFont.wrapped(part, TextWidth), 0});
    }
    return parts;
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

void kWidget::drawLines(QPainter& painter, const BoxFont& font, const QStringList& lines, int align)
{
    painter.setFont(font.font());
    for (const QString& line : lines) {
        painter.drawText(TextLeft, y, TextWidth, font.lineHeight(), align, line);
        y += font.pitch();
    }
}

void kWidget::drawTitle(const QString& title, const QString& icon)
{
    const QStringList lines = titleFont.wrapped(title, TextWidth).texts;
    if (icon != composed.icon)
        titleIcon = QPixmap();
    if (!icon.isEmpty() && titleIcon.isNull())
        loadPixmap(titleIcon, work_folder + icon);
    const QSize size = pixmapSize(titleIcon);
    const int linesHeight = int(lines.size()) * titleFont.pitch();
    reserve(y + BlockGap + size.height() + linesHeight);
    QPainter painter(&canvas);
    painter.fillRect(0, y, BoxWidth, linesHeight + BlockGap, Qt::black);
    // Beyond that rectangle the canvas may hold what an earlier box left.
    painter.fillRect(0, y + linesHeight + BlockGap, BoxWidth, size.height(), Qt::black);
    y += BlockGap;
    painter.drawPixmap((BoxWidth - size.width()) / 2, y, titleIcon);
    y += size.height();
    painter.setPen(Qt::white);
    drawLines(painter, titleFont, lines, Qt::AlignHCenter);
}

void kWidget::drawText(const QString& text, int align)
{
    // Each section wraps on its own, so a rule ends a line in the count as it does on screen.
    sections = sectionsOf(text);
    const int rules = int(sections.size()) - 1;
    int lineCount = 0;
    for (const Section& section : std::as_const(sections))
        lineCount += int(section.lines.texts.size());
    const int height = (rules + lineCount) * textFont.pitch() + BlockGap;
    reserve(y + height + rules * BlockGap);
    QPainter painter(&canvas);
    drawBlock(painter, y, height);
    y += BlockGap;
    for (int i = 0; i <= rules; ++i) {
        sections[i].top = y;
        drawLines(painter, textFont, sections.at(i).lines.texts, align);
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
    reserve(y + KeyBarHeight);
    QPainter painter(&canvas);
    painter.fillRect(0, y, BoxWidth, KeyBarHeight, Qt::black);
    painter.setFont(textFont.font());
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

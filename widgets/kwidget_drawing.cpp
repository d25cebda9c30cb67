// How the blocks of a box are drawn.

#include "lang/texts.h"
#include "platform/screenscale.h"
#include "platform/zpixmap.h"
#include "shell/settings.h"
#include "widgets/boxparts.h"
#include "widgets/kwidget.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{

const QLatin1String Rule("<hr>");

QPixmap blackCanvas(int height, qreal density)
{
    QPixmap canvas(QSize(int(std::ceil(Box::Width * density)), int(std::ceil(height * density))));
    canvas.setDevicePixelRatio(density);
    // The title's ground reaches under its icon, which its own rectangle does not.
    canvas.fill(Qt::black);
    return canvas;
}

} // namespace

void kWidget::drawAll()
{
    const bool titleStands = titleBottom_ > 0 && content_.title == composed_.title &&
                             content_.icon == composed_.icon &&
                             canvas.devicePixelRatio() == ScreenScale::canvasDensity();
    y = titleBottom_;
    if (!titleStands) {
        y = 0;
        canvas = blackCanvas(ZScreen::Height, ScreenScale::canvasDensity());
        drawTitle(content_.title, content_.icon);
        titleBottom_ = y;
    }
    if (!content_.process || !content_.text.isEmpty())
        drawText(content_.text, content_.align);
    if (content_.process) {
        drawAniIcon();
        if (!content_.below.isEmpty())
            drawText(content_.below, content_.alignBelow);
    }
    if (content_.keyBar != NoKeys)
        drawSoftKeys(content_.keyBar);
}

/// The quick way for progress texts, of which only some lines change: draws those alone and returns
/// where they are, or at least the last line. Empty if more has changed.
QRegion kWidget::redrawLines()
{
    if (sections_.isEmpty() || content_.process || composed_.process ||
        content_.title != composed_.title || content_.icon != composed_.icon ||
        content_.align != composed_.align || content_.keyBar != composed_.keyBar ||
        canvas.devicePixelRatio() != ScreenScale::canvasDensity())
        return {};
    const Section& last = sections_.constLast();
    const QRegion lastLine = lineRect(last, last.lines.texts.size() - 1);
    if (content_.text == composed_.text)
        return lastLine;
    const QList<Section> next = sectionsOf(content_.text);
    const auto alike = [](const Section& left, const Section& right) {
        return left.lines.texts.size() == right.lines.texts.size() &&
               (left.text == right.text || (left.lines.contained && right.lines.contained));
    };
    if (!std::equal(next.begin(), next.end(), sections_.begin(), sections_.end(), alike))
        return {};
    const QRegion changed = drawChangedLines(next);
    return changed.isEmpty() ? lastLine : changed;
}

QRegion kWidget::drawChangedLines(const QList<Section>& next)
{
    QRegion changed;
    QPainter painter(&canvas);
    painter.setPen(Qt::black);
    for (qsizetype i = 0; i < next.size(); ++i) {
        const Section before = std::exchange(sections_[i], next.at(i));
        sections_[i].top = before.top;
        for (qsizetype line = 0; line < before.lines.texts.size(); ++line) {
            const QString& text = next.at(i).lines.texts.at(line);
            if (text == before.lines.texts.at(line))
                continue;
            const QRect place = lineRect(before, line);
            changed += textFont_.redrawLine(painter, place, Box::lineArea(textFont_, place.top()),
                                            content_.align, before.lines.texts.at(line), text);
        }
    }
    return changed;
}

/// Where a line is drawn; the outline is beside it, and may be right below.
QRect kWidget::lineRect(const Section& section, qsizetype line) const
{
    return {1, section.top + int(line) * textFont_.pitch(), Box::Width - 2, textFont_.pitch() - 1};
}

/// A text's parts between its rules. Those that it had before need not be wrapped again.
QList<kWidget::Section> kWidget::sectionsOf(const QString& text)
{
    QList<Section> parts;
    for (const QString& part : text.split(Rule)) {
        const qsizetype i = parts.size();
        if (i < sections_.size() && sections_.at(i).text == part)
            parts.append(sections_.at(i));
        else
            parts.append({part, textFont_.wrapped(part, Box::TextWidth), 0});
    }
    return parts;
}

/// Makes the canvas high enough. A text may need more than the screen is high.
void kWidget::reserve(int height)
{
    if (pixmapSize(canvas).height() >= height &&
        canvas.devicePixelRatio() == ScreenScale::canvasDensity())
        return;
    QPixmap larger =
        blackCanvas(std::max(height, int(ZScreen::Height)), ScreenScale::canvasDensity());
    QPainter(&larger).drawPixmap(0, 0, canvas);
    canvas = larger;
}

void kWidget::drawTitle(const QString& title, const QString& icon)
{
    const QStringList lines = titleFont_.wrapped(title, Box::TextWidth).texts;
    if (icon != composed_.icon)
        titleIcon_ = QPixmap();
    if (!icon.isEmpty() && titleIcon_.isNull())
        loadPixmap(titleIcon_, work_folder + icon);
    const QSize size = pixmapSize(titleIcon_);
    const int linesHeight = int(lines.size()) * titleFont_.pitch();
    reserve(y + Box::Gap + size.height() + linesHeight);
    QPainter painter(&canvas);
    painter.fillRect(0, y, Box::Width, linesHeight + Box::Gap, Qt::black);
    // Beyond that rectangle the canvas may hold what an earlier box left.
    painter.fillRect(0, y + linesHeight + Box::Gap, Box::Width, size.height(), Qt::black);
    y += Box::Gap;
    drawPicture(painter, {(Box::Width - size.width()) / 2, y}, titleIcon_);
    y += size.height();
    painter.setPen(Qt::white);
    y = Box::drawLines(painter, titleFont_, lines, y, Qt::AlignHCenter);
}

void kWidget::drawText(const QString& text, int align)
{
    // Each section wraps on its own, so a rule ends a line in the count as it does on screen.
    sections_ = sectionsOf(text);
    const int rules = int(sections_.size()) - 1;
    int lineCount = 0;
    for (const Section& section : std::as_const(sections_))
        lineCount += int(section.lines.texts.size());
    const int height = (rules + lineCount) * textFont_.pitch() + Box::Gap;
    reserve(y + height + rules * Box::Gap);
    QPainter painter(&canvas);
    Box::drawGround(painter, y, height);
    y += Box::Gap;
    for (int i = 0; i <= rules; ++i) {
        sections_[i].top = y;
        y = Box::drawLines(painter, textFont_, sections_.at(i).lines.texts, y, align);
        if (i == rules)
            break;
        painter.drawLine(Box::TextLeft, y, Box::TextWidth, y);
        y += Box::Gap;
    }
    // With rules the block reserves more room than is used; its outline closes where it ends.
    painter.drawLine(0, y - 1, Box::Width - 1, y - 1);
}

void kWidget::drawSoftKeys(int kind)
{
    reserve(y + Box::KeyBarHeight);
    QPainter painter(&canvas);
    Box::drawKeyBar(painter, textFont_, y, answersOf(kind));
    y += Box::KeyBarHeight;
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
    Box::drawGround(painter, y - 1, frameHeight + 6);
    drawPicture(painter, frameRect().topLeft(), aniFrame);
    y += frameHeight + Box::Gap;
}

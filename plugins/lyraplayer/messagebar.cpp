#include "plugins/lyraplayer/messagebar.h"

#include "platform/shownname.h"
#include "platform/zskinservice.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>

namespace
{

constexpr int BarMargin = 6;

QFont textFont(const QWidget& bar)
{
    return ZSkinService::font(bar.font().family(), 13, 50);
}

} // namespace

MessageBar::MessageBar(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    hide();
}

void MessageBar::setText(const QString& text)
{
    const QString shown = withMarks(text);
    if (shown == text_)
        return;
    text_ = shown;
    breakLines();
    setVisible(!text.isEmpty());
}

void MessageBar::breakLines()
{
    const QFont font = textFont(*this);
    const int room = std::max(width() - 2 * BarMargin, 1);
    QTextLayout layout(text_, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    lines_.clear();
    for (QTextLine line = layout.createLine(); line.isValid() && lines_.size() < MaxLines;
         line = layout.createLine()) {
        line.setLineWidth(room);
        const bool last = lines_.size() + 1 == MaxLines;
        const QString rest = text_.mid(line.textStart(), last ? -1 : line.textLength());
        lines_.append(QFontMetrics(font).elidedText(rest.trimmed(), Qt::ElideRight, room));
    }
    layout.endLayout();
    setFixedHeight(int(lines_.size()) * QFontMetrics(font).height() + BarMargin);
    update();
}

void MessageBar::paintEvent(QPaintEvent* /*event*/)
{
    const auto& look = ZSkinService::look(ZSkinService::clsDarkListBox);
    QPainter painter(this);
    painter.fillRect(rect(), look.highlight);
    painter.setFont(textFont(*this));
    painter.setPen(look.highlightText);
    const int height = painter.fontMetrics().height();
    for (qsizetype i = 0; i < lines_.size(); ++i) {
        const QRect line(BarMargin, BarMargin / 2 + int(i) * height, width() - 2 * BarMargin,
                         height);
        painter.drawText(line, int(Qt::AlignCenter) | Qt::TextSingleLine, lines_.at(i));
    }
}

void MessageBar::resizeEvent(QResizeEvent* /*event*/)
{
    breakLines();
}

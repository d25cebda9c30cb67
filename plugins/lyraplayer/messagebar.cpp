#include "plugins/lyraplayer/messagebar.h"

#include "platform/zskinservice.h"
#include "plugins/support/brokenlines.h"

#include <QPainter>

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
    if (text == text_)
        return;
    text_ = text;
    breakLines();
    setVisible(!text.isEmpty());
}

void MessageBar::breakLines()
{
    const QFont font = textFont(*this);
    lines_ = brokenLines(text_, font, width() - 2 * BarMargin, MaxLines);
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
    paintLines(painter, rect().adjusted(BarMargin, BarMargin / 2, -BarMargin, 0), lines_);
}

void MessageBar::resizeEvent(QResizeEvent* /*event*/)
{
    breakLines();
}

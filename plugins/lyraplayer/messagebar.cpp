#include "plugins/lyraplayer/messagebar.h"

#include "platform/warningsign.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"
#include "plugins/support/brokenlines.h"

#include <QPainter>

namespace
{

constexpr int BarMargin = 6;
/// Where the words begin, behind the sign.
constexpr int WordsLeft = BarMargin + WarningSignSize + BarMargin;

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
    lines_ = brokenLines(text_, font, width() - WordsLeft - BarMargin, MaxLines);
    setFixedHeight(int(lines_.size()) * QFontMetrics(font).height() + BarMargin);
    update();
}

void MessageBar::paintEvent(QPaintEvent* /*event*/)
{
    const auto& look = ZSkinService::look(ZSkinService::clsDarkListBox);
    QPainter painter(this);
    painter.fillRect(rect(), look.highlight);
    paintWarningSign(painter, {BarMargin, (height() - WarningSignSize) / 2},
                     ZTheme::current().barWarning, look.highlight);
    painter.setFont(textFont(*this));
    painter.setPen(look.highlightText);
    paintLines(painter, rect().adjusted(WordsLeft, BarMargin / 2, -BarMargin, 0), lines_);
}

void MessageBar::resizeEvent(QResizeEvent* /*event*/)
{
    breakLines();
}

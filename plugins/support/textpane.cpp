#include "plugins/support/textpane.h"

#include "platform/glidingtext.h"
#include "platform/keymap.h"
#include "platform/scrollthumb.h"
#include "platform/zskinservice.h"
#include "plugins/support/notice.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace
{

constexpr int SideMargin = 3;
constexpr int TopMargin = 2;
constexpr int SidewaysStep = 80;
constexpr int WheelRows = 3;
/// A notch of a wheel, in eighths of a degree.
constexpr int WheelNotch = 120;
constexpr int Characters = 0x10000;

enum class Move { Rows, Pages, Start, End, Sideways };

struct KeyMove {
    int code;
    Move move;
    int count = 0;
};

constexpr int HomeCode = 0x1010;
constexpr int EndCode = 0x1011;

constexpr KeyMove KeyMoves[] = {
    {PhoneKey::Up, Move::Rows, -1},
    {PhoneKey::Down, Move::Rows, 1},
    {'2', Move::Rows, -1},
    {'8', Move::Rows, 1},
    {PhoneKey::PageUp, Move::Pages, -1},
    {PhoneKey::PageDown, Move::Pages, 1},
    {'4', Move::Pages, -1},
    {'6', Move::Pages, 1},
    {PhoneKey::Left, Move::Sideways, -1},
    {PhoneKey::Right, Move::Sideways, 1},
    {HomeCode, Move::Start},
    {EndCode, Move::End},
    {'1', Move::Start},
    {'7', Move::End},
};

} // namespace

TextPane::TextPane(const TextSource& source, QWidget* parent)
    : QWidget(parent),
      source_(source),
      pager_(source, [this](char32_t character) { return advanceOf(character); }),
      advances_(Characters, -1)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFont(ZSkinService::font(font().family(), 13));
}

void TextPane::setNotice(const QString& text, bool instead)
{
    notice_ = text;
    noticeInstead_ = instead;
    refresh();
}

void TextPane::setWrapping(bool on)
{
    if (wrapping_ == on)
        return;
    wrapping_ = on;
    passed_ = 0;
    pager_.setWidth(on ? textWidth() : 0);
    showFrom(top_);
}

bool TextPane::handleKey(int code)
{
    const auto* known = std::find_if(std::begin(KeyMoves), std::end(KeyMoves),
                                     [code](const KeyMove& key) { return key.code == code; });
    if (known == std::end(KeyMoves))
        return false;
    switch (known->move) {
    case Move::Rows:
        moveBy(known->count);
        break;
    case Move::Sideways:
        if (!wrapping_) {
            moveSideways(known->count * SidewaysStep);
            break;
        }
        [[fallthrough]];
    case Move::Pages:
        moveBy(known->count * pageStep());
        break;
    case Move::Start:
        toStart();
        break;
    case Move::End:
        toEnd();
        break;
    }
    return true;
}

void TextPane::refresh()
{
    if (following_ && wasAtEnd_)
        toEnd();
    else
        showFrom(top_);
}

void TextPane::toStart()
{
    passed_ = 0;
    showFrom(source_.begin());
}

void TextPane::toEnd()
{
    showFrom(source_.end());
}

bool TextPane::isAtEnd() const
{
    return rows_.isEmpty() || rows_.back().end >= source_.end();
}

int TextPane::percent() const
{
    if (isAtEnd())
        return 100;
    const qint64 above = rows_.front().start - source_.begin();
    const qint64 below = source_.end() - rows_.back().end;
    // In floating point: the product may be larger than a number holds.
    return std::clamp(int(100.0 * double(above) / double(above + below)), 0, 99);
}

int TextPane::rowHeight() const
{
    return fontMetrics().height();
}

int TextPane::pageRows() const
{
    return std::max((height() - TopMargin) / rowHeight(), 1);
}

int TextPane::pageStep() const
{
    // A row stays in view for the reader to find the place.
    return std::max(pageRows() - 1, 1);
}

int TextPane::textWidth() const
{
    return std::max(width() - 2 * SideMargin - ZSkinService::ScrollBarWidth, 1);
}

int TextPane::advanceOf(char32_t character)
{
    if (character >= Characters)
        return fontMetrics().horizontalAdvance(QString::fromUcs4(&character, 1));
    qint16& advance = advances_[character];
    if (advance < 0) {
        const int width = fontMetrics().horizontalAdvance(QChar(char16_t(character)));
        advance = qint16(std::clamp(width, 0, 1000));
    }
    return advance;
}

void TextPane::moveBy(int rows)
{
    showFrom(pager_.moved(top_, rows));
}

int TextPane::widthOf(const TextRow& row) const
{
    int x = 0;
    for (const char32_t character : row.text.toUcs4())
        x += pager_.advance(character, x);
    return x;
}

/// To the right by so many pixels, or to the left. Rows that begin at the right pass the other way.
void TextPane::moveSideways(int pixels)
{
    int widest = 0;
    bool fromTheRight = false;
    for (const TextRow& row : std::as_const(rows_)) {
        const int width = widthOf(row);
        // Of rows of both kinds, the longest one says where there is more.
        if (width > widest)
            fromTheRight = row.rightToLeft;
        widest = std::max(widest, width);
    }
    const int wanted = passed_ + (fromTheRight ? -pixels : pixels);
    passed_ = std::clamp(wanted, 0, std::max(widest - textWidth(), 0));
    update();
}

void TextPane::showFrom(qint64 offset)
{
    if (noticeInstead_) {
        rows_.clear();
    } else {
        top_ = std::min(pager_.rowStart(offset), pager_.lastPage(pageRows()));
        rows_ = pager_.rows(top_, pageRows());
    }
    wasAtEnd_ = isAtEnd();
    update();
    emit moved();
}

void TextPane::resizeEvent(QResizeEvent* /*event*/)
{
    pager_.setWidth(wrapping_ ? textWidth() : 0);
    showFrom(following_ && wasAtEnd_ ? source_.end() : top_);
}

void TextPane::wheelEvent(QWheelEvent* event)
{
    wheel_ += event->angleDelta().y() * WheelRows;
    const int rows = wheel_ / WheelNotch;
    wheel_ -= rows * WheelNotch;
    if (rows != 0)
        moveBy(-rows);
    event->accept();
}

void TextPane::mousePressEvent(QMouseEvent* event)
{
    moveBy(event->position().y() < height() / 2.0 ? -pageStep() : pageStep());
    event->accept();
}

void TextPane::paintEvent(QPaintEvent* /*event*/)
{
    const auto& look = ZSkinService::look(ZSkinService::clsListBox);
    QPainter painter(this);
    painter.fillRect(rect(), look.background);
    painter.setPen(look.text);
    if (rows_.isEmpty()) {
        paintNotice(painter, rect(), notice_);
        return;
    }
    painter.save();
    painter.setClipRect(SideMargin, 0, textWidth(), height());
    for (int i = 0; i < rows_.size(); ++i)
        paintRow(painter, rows_.at(i), TopMargin + i * rowHeight() + fontMetrics().ascent());
    painter.restore();
    paintBar(painter);
}

void TextPane::paintRow(QPainter& painter, const TextRow& row, int y) const
{
    int x = 0;
    int runStart = 0;
    QString run;
    const auto flush = [&] {
        paintRun(painter, run, row.rightToLeft, runStart - passed_, y);
        run.clear();
    };
    for (const char32_t character : row.text.toUcs4()) {
        const int next = x + pager_.advance(character, x);
        if (character == '\t') {
            flush();
        } else if (next >= passed_) {
            if (run.isEmpty())
                runStart = x;
            run += QChar::fromUcs4(character);
        }
        x = next;
        if (x - passed_ > textWidth())
            break;
    }
    flush();
    paintCuts(painter, row, x, y);
}

/// Where letters are cut in halves they fade; `width` is how much of the row has been drawn.
void TextPane::paintCuts(QPainter& painter, const TextRow& row, int width, int y) const
{
    const bool begins = passed_ > 0 && width > passed_;
    const bool goesOn = !wrapping_ && width - passed_ > textWidth();
    fadeEdges(painter, QRect(SideMargin, y - fontMetrics().ascent(), textWidth(), rowHeight()),
              ZSkinService::look(ZSkinService::clsListBox).background,
              row.rightToLeft ? goesOn : begins, row.rightToLeft ? begins : goesOn);
}

/// Draws what stands between tabs, so many pixels from where rows begin.
void TextPane::paintRun(QPainter& painter, const QString& run, bool rightToLeft, int distance,
                        int y) const
{
    if (run.isEmpty())
        return;
    if (!rightToLeft) {
        painter.drawText(SideMargin + distance, y, run);
        return;
    }
    // Joined letters may be narrower than they are one by one.
    painter.setLayoutDirection(Qt::RightToLeft);
    const int width = fontMetrics().horizontalAdvance(run);
    painter.drawText(SideMargin + textWidth() - distance - width, y, run);
    painter.setLayoutDirection(Qt::LeftToRight);
}

void TextPane::paintBar(QPainter& painter) const
{
    const qint64 whole = source_.end() - source_.begin();
    const qint64 shown = rows_.back().end - rows_.front().start;
    if (whole <= shown)
        return;
    const qint64 first = isAtEnd() ? whole - shown : top_ - source_.begin();
    ScrollThumb::of(height(), shown, whole, first)
        .paint(painter, {width() - ZSkinService::ScrollThumbWidth, 0},
               ZSkinService::look(ZSkinService::clsListBox).thumb);
}

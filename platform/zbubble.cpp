#include "platform/zbubble.h"

#include "platform/warningsign.h"
#include "platform/zaccessiblewidget.h"
#include "platform/zlistrowpainter.h"
#include "platform/zmotion.h"
#include "platform/ztheme.h"

#include <QPainter>
#include <QVariantAnimation>

#include <algorithm>

namespace
{

constexpr int NoteFontSize = 15;
constexpr int LetterFontSize = 30;
constexpr int Padding = 9;
constexpr int SignGap = 6;
constexpr int Corner = 2;
/// What a text may be wider than its advance in whole pixels.
constexpr int Rounding = 2;
/// What a bubble has from its first frame on, so that it can be read at once.
constexpr double FirstOpacity = 0.5;

QFont fontOf(const QWidget& widget, int size)
{
    QFont font = widget.font();
    font.setPixelSize(size);
    font.setWeight(QFont::Bold);
    return font;
}

} // namespace

ZBubble::ZBubble(QWidget* over) : QWidget(over)
{
    hide();
    setObjectName(QStringLiteral("ZBubble"));
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void ZBubble::showNote(const QString& text, bool isWarning, const QRect& spared)
{
    isWarning_ = isWarning;
    isLetter_ = false;
    const QRect over = parentWidget()->rect().adjusted(Margin, Margin, -Margin, -Margin);
    const int wanted = QFontMetrics(fontOf(*this, NoteFontSize))
                           .horizontalAdvance(ZListRowPainter::visibleText(text)) +
                       Rounding + 2 * Padding + (isWarning ? WarningSignSize + SignGap : 0);
    const int width = std::clamp(wanted, int(NoteHeight), over.width());
    QRect place(over.left() + (over.width() - width) / 2, over.bottom() + 1 - NoteHeight, width,
                NoteHeight);
    if (place.intersects(spared))
        place.moveTop(over.top());
    showAt(place, text);
}

void ZBubble::showLetter(const QString& letter)
{
    isWarning_ = false;
    isLetter_ = true;
    const QRect over = parentWidget()->rect();
    // As far from the edge as it is wide: the thumb of the scroll bar is in view.
    showAt(QRect(over.right() + 1 - LetterSize - LetterSize / 2,
                 over.top() + (over.height() - LetterSize) / 2, LetterSize, LetterSize),
           letter);
}

void ZBubble::showAt(const QRect& place, const QString& text)
{
    setAccessibleName(text);
    setGeometry(place);
    raise();
    const bool comes = isHidden();
    isLeaving_ = false;
    if (ZMotion::isEnabled() && comes)
        opacity_ = FirstOpacity;
    setVisible(true);
    fadeTo(1);
    update();
    if (isWarning_)
        ZAccessible::tellAlert(this);
}

void ZBubble::leave()
{
    if (isHidden())
        return;
    isLeaving_ = true;
    fadeTo(0);
}

/// Ends by itself, and nothing wakes the process then.
void ZBubble::fadeTo(double opacity)
{
    if (!ZMotion::isEnabled() || opacity_ == opacity)
        return settle();
    if (fade_ == nullptr) {
        fade_ = new QVariantAnimation(this);
        connect(fade_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
            opacity_ = value.toDouble();
            update();
        });
        connect(fade_, &QVariantAnimation::finished, this, &ZBubble::settle);
    }
    fade_->stop();
    fade_->setDuration(FadeMilliseconds);
    fade_->setStartValue(opacity_);
    fade_->setEndValue(opacity);
    fade_->start();
}

void ZBubble::settle()
{
    opacity_ = 1;
    setVisible(!isLeaving_);
}

void ZBubble::hideEvent(QHideEvent* /*event*/)
{
    if (fade_ != nullptr)
        fade_->stop();
    opacity_ = 1;
}

QAccessibleInterface* ZBubble::makeAccessible()
{
    return new ZAccessibleWidget(this, QAccessible::StaticText);
}

void ZBubble::paintEvent(QPaintEvent* /*event*/)
{
    const ZTheme& theme = ZTheme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(opacity_);
    painter.setPen(theme.outline);
    painter.setBrush(theme.bar);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Corner, Corner);
    painter.setFont(fontOf(*this, isLetter_ ? LetterFontSize : NoteFontSize));
    QRect room = isLetter_ ? rect() : rect().adjusted(Padding, 0, -Padding, 0);
    if (isWarning_) {
        paintWarningSign(painter, {room.left(), (height() - WarningSignSize) / 2}, theme.barWarning,
                         theme.bar);
        room.setLeft(room.left() + WarningSignSize + SignGap);
    }
    painter.setPen(isWarning_ ? theme.barWarning : theme.barText);
    const QString shown = painter.fontMetrics().elidedText(ZListRowPainter::visibleText(text()),
                                                           Qt::ElideLeft, room.width());
    painter.drawText(room, Qt::AlignCenter | Qt::TextSingleLine, shown);
}

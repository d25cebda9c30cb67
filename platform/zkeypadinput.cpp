#include "platform/zkeypadinput.h"

#include "platform/keymap.h"
#include "platform/zaccessible.h"
#include "platform/zaccessiblewidget.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsymbolsheet.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QTextCharFormat>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace
{

constexpr int BadgeFontSize = 11;
constexpr int BadgePadding = 4;
constexpr int BadgeRight = 5; ///< between the badge and the field's edge

/// Says the mode. It is not for fingers: what lies behind it is the field.
class ModeBadge : public QWidget, public ZAccessibleSource
{
public:
    explicit ModeBadge(QWidget* field) : QWidget(field)
    {
        setObjectName(QStringLiteral("ModeBadge"));
        setAttribute(Qt::WA_TransparentForMouseEvents);
        QFont small = field->font();
        small.setPixelSize(BadgeFontSize);
        setFont(small);
    }

    /// The widest text decides the width, so that the badge stays as it is from mode to mode.
    void setRoomFor(const QStringList& texts)
    {
        int widest = 0;
        for (const QString& text : texts)
            widest = std::max(widest, fontMetrics().horizontalAdvance(text));
        resize(widest + 2 * BadgePadding, ZKeypadInput::BadgeHeight);
    }

    void setText(const QString& text)
    {
        if (text == accessibleName())
            return;
        setAccessibleName(text);
        update();
    }

    QAccessibleInterface* makeAccessible() override
    {
        return new ZAccessibleWidget(this, QAccessible::StaticText);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const ZSkinService::Look& look = ZSkinService::look(ZSkinService::clsListBox);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.secondaryText);
        painter.drawRoundedRect(rect(), 2, 2);
        painter.setPen(look.background);
        painter.drawText(rect(), Qt::AlignCenter, accessibleName());
    }
};

bool isDigitCode(int code)
{
    return code >= '0' && code <= '9';
}

} // namespace

ZKeypadInput::ZKeypadInput(QLineEdit* field)
    : QObject(field), field_(field), letterTimer_(new QTimer(this)), holdTimer_(new QTimer(this))
{
    for (QTimer* timer : {letterTimer_, holdTimer_})
        timer->setSingleShot(true);
    connect(letterTimer_, &QTimer::timeout, this, [this] { letterTimeIsOver(); });
    connect(holdTimer_, &QTimer::timeout, this, [this] { holdTimeIsOver(); });
    setTimes(LetterTime, HoldTime);
    field->installEventFilter(this);
}

void ZKeypadInput::setTimes(int letterTime, int holdTime)
{
    letterTimer_->setInterval(letterTime);
    holdTime_ = holdTime;
}

void ZKeypadInput::begin()
{
    if (!open_.isEmpty())
        write(QString(), QString());
    settle();
    typing_ = KeypadTyping();
    if (sheet_)
        sheet_->hide();
    showBadge();
}

bool ZKeypadInput::eventFilter(QObject* /*watched*/, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        showBadge();
        if (!takeKey(*static_cast<QKeyEvent*>(event)))
            return false;
        event->accept();
        return true;
    case QEvent::KeyRelease:
        takeRelease(*static_cast<QKeyEvent*>(event));
        return false;
    case QEvent::Hide:
        if (sheet_)
            sheet_->hide();
        [[fallthrough]];
    case QEvent::FocusOut:
    case QEvent::MouseButtonPress:
        settle();
        return false;
    case QEvent::Show:
    case QEvent::FocusIn:
    case QEvent::Resize:
        showBadge();
        return false;
    default:
        return false;
    }
}

void ZKeypadInput::takeRelease(const QKeyEvent& event)
{
    if (event.isAutoRepeat())
        return;
    releasedAt_ = event.timestamp();
    releasedKey_ = event.nativeScanCode();
    heldLeft_ = holdTimer_->isActive() ? holdTimer_->remainingTime() : -1;
    holdTimer_->stop();
}

/// Whether a press is a repetition of a held key. The toolkit tells so where it finds release and
/// press together; when it is late for the one, it takes both for true, of one time.
bool ZKeypadInput::isRepetition(const QKeyEvent& event) const
{
    return event.isAutoRepeat() ||
           (event.timestamp() != 0 && event.timestamp() == releasedAt_ &&
            event.nativeScanCode() != 0 && event.nativeScanCode() == releasedKey_);
}

/// A key that was not released after all goes on being held.
void ZKeypadInput::goOnHolding()
{
    if (const int left = std::exchange(heldLeft_, -1); left >= 0)
        holdTimer_->start(left);
}

bool ZKeypadInput::takeKey(const QKeyEvent& event)
{
    const int code = PhoneKey::code(event);
    // Keys like Shift alone are on the way to another one.
    if (code == 0 && event.text().isEmpty())
        return false;
    if (isRepetition(event))
        goOnHolding();
    else
        holdTimer_->stop();
    const bool hasKeypad = KeyMap::instance().hasKeypad();
    if ((event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == 0) {
        // A keyboard repeats its Backspace, which never empties the field.
        if (code == PhoneKey::Clear && (hasKeypad || event.key() != Qt::Key_Backspace)) {
            if (!isRepetition(event))
                takeClear();
            return true;
        }
        if (hasKeypad && takeKeypadKey(event, code))
            return true;
    }
    settle();
    return false;
}

bool ZKeypadInput::takeKeypadKey(const QKeyEvent& event, int code)
{
    if (code == PhoneKey::Right && !open_.isEmpty()) {
        // The cursor stands behind the letter already.
        settle();
        return true;
    }
    if (!isDigitCode(code) && code != '*' && code != '#')
        return false;
    // What a key does when it is held is the matter of a timer, on devices that repeat none too.
    if (isRepetition(event))
        return true;
    if (isDigitCode(code)) {
        takeDigit(event, code - '0');
        return true;
    }
    settle();
    if (code == '*') {
        openSheet();
    } else {
        typing_.nextMode();
        showBadge();
    }
    return true;
}

void ZKeypadInput::takeDigit(const QKeyEvent& event, int digit)
{
    const bool isNext = goesOn(event, digit);
    if (!isNext)
        settle();
    const int at = field_->hasSelectedText() ? field_->selectionStart() : field_->cursorPosition();
    const QString letter = typing_.press(digit, isNext, field_->text().left(at));
    if (typing_.mode() == KeypadTyping::Mode::Digits) {
        write(QString(), letter);
        return;
    }
    write(letter, QString());
    pressedAt_ = event.timestamp();
    letterTimer_->start();
    held_ = digit;
    holdTimer_->start(holdTime_);
}

/// Whether a press gives the next letter of its key in the place of the last one.
bool ZKeypadInput::goesOn(const QKeyEvent& event, int digit) const
{
    if (typing_.openDigit() != digit)
        return false;
    const bool tellTheirTime = pressedAt_ != 0 && event.timestamp() != 0;
    if (!open_.isEmpty())
        return !tellTheirTime || isSoonAfter(event);
    // The time was over before this press arrived, but not when the key was pressed.
    return tellTheirTime && isSoonAfter(event) && !settledText_.isNull() &&
           settledText_ == field_->text() && settledAt_ == field_->cursorPosition() &&
           !field_->hasSelectedText();
}

bool ZKeypadInput::isSoonAfter(const QKeyEvent& event) const
{
    return event.timestamp() - pressedAt_ <= quint64(letterTimer_->interval());
}

void ZKeypadInput::takeClear()
{
    const bool isOpen = !open_.isEmpty();
    if (isOpen)
        write(QString(), QString());
    settle();
    if (!isOpen)
        field_->backspace();
    held_ = HeldClear;
    holdTimer_->start(holdTime_);
}

/// Puts `open`, which may still change, or `settled` into the place of the open letter, or of the
/// one that its time has settled.
void ZKeypadInput::write(const QString& open, const QString& settled)
{
    QList<QInputMethodEvent::Attribute> attributes;
    if (!open.isEmpty()) {
        QTextCharFormat underlined;
        underlined.setUnderlineStyle(QTextCharFormat::SingleUnderline);
        attributes.append({QInputMethodEvent::TextFormat, 0, int(open.size()), underlined});
    }
    const int replaced = settledText_.isNull() ? 0 : 1;
    settledText_ = QString();
    open_ = open;
    QInputMethodEvent event(open, attributes);
    event.setCommitString(settled, -replaced, replaced);
    QCoreApplication::sendEvent(field_, &event);
}

void ZKeypadInput::settle()
{
    settledText_ = QString();
    if (!open_.isEmpty())
        write(QString(), std::exchange(open_, QString()));
    typing_.end();
    letterTimer_->stop();
    holdTimer_->stop();
}

void ZKeypadInput::letterTimeIsOver()
{
    write(QString(), std::exchange(open_, QString()));
    settledText_ = field_->text();
    settledAt_ = field_->cursorPosition();
}

void ZKeypadInput::holdTimeIsOver()
{
    if (held_ == HeldClear) {
        field_->clear();
        return;
    }
    write(QString(), QString::number(held_));
    settle();
}

void ZKeypadInput::openSheet()
{
    ZScreen* const screen = ZScreen::instance();
    if (!screen->isAncestorOf(field_))
        return;
    if (!sheet_) {
        sheet_ = new ZSymbolSheet(this);
        connect(sheet_, &ZSymbolSheet::chosen, field_, &QLineEdit::insert);
    }
    sheet_->setFont(field_->font());
    sheet_->openBeside({field_->mapTo(screen, QPoint()), field_->size()});
}

void ZKeypadInput::showBadge()
{
    if (!KeyMap::instance().hasKeypad()) {
        if (badge_ != nullptr && !badge_->isHidden()) {
            badge_->hide();
            field_->setTextMargins(QMargins());
        }
        return;
    }
    if (badge_ == nullptr)
        badge_ = new ModeBadge(field_);
    auto* const badge = static_cast<ModeBadge*>(badge_);
    QStringList names;
    for (int mode = 0; mode < KeypadTyping::Modes; ++mode)
        names.append(typing_.nameOf(static_cast<KeypadTyping::Mode>(mode)));
    badge->setRoomFor(names);
    badge->setText(typing_.nameOf(mode()));
    badge->move(field_->width() - badge->width() - BadgeRight,
                (field_->height() - badge->height()) / 2);
    field_->setTextMargins(0, 0, badge->width() + BadgeRight - 1, 0);
    badge->show();
}

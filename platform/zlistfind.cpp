#include "platform/zlistfind.h"

#include "platform/keymap.h"
#include "platform/zbubble.h"
#include "platform/zlistbox.h"

#include <QAbstractItemModel>
#include <QDeadlineTimer>
#include <QKeyEvent>
#include <QTextBoundaryFinder>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace
{

/// How long the letter stays when no further page is turned, in milliseconds.
constexpr int LetterTime = 800;

/// The toolkit's keys from here on are no characters.
constexpr int FirstSpecialKey = 0x01000000;
constexpr int FirstPhoneCode = 0x1000;

/// What a key types; empty if it is no key of a character. One that the key map gives another
/// character types that, one that the toolkit has no number for what the display says.
QString characterOf(const QKeyEvent& event, int code)
{
    constexpr auto Others = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    if ((event.modifiers() & Others) != 0)
        return {};
    if (code == event.key() && code < FirstSpecialKey)
        return event.text();
    if (code > ' ' && code < FirstPhoneCode)
        return QString(QChar(char16_t(code)));
    return event.key() == Qt::Key_unknown ? event.text() : QString();
}

char32_t firstOf(const QString& text)
{
    return text.isEmpty() ? U'\0' : text.toUcs4().first();
}

/// When a key was pressed, in milliseconds from any time on.
quint64 timeOf(const QKeyEvent& event)
{
    return event.timestamp() != 0 ? event.timestamp()
                                  : quint64(QDeadlineTimer::current(Qt::PreciseTimer).deadline());
}

/// The first letter as a reader sees it, accents included.
QString firstLetter(QByteArrayView name)
{
    const QString text = QString::fromUtf8(name);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    return text.left(std::max<qsizetype>(finder.toNextBoundary(), 0)).toUpper();
}

} // namespace

ZListFind::ZListFind(ZListBox* list, NameFinder::NameOf nameOf)
    : QObject(list), list_(list), nameOf_(std::move(nameOf)), timer_(new QTimer(this))
{
    timer_->setSingleShot(true);
    connect(timer_, &QTimer::timeout, this, &ZListFind::timeIsOver);
    connect(list->model(), &QAbstractItemModel::modelReset, this, &ZListFind::end);
    connect(list, &ZListBox::highlighted, this, [this] {
        if (isPaging_)
            showLetter();
        else if (!isMoving_)
            end();
    });
    list->installEventFilter(this);
}

ZListFind::~ZListFind() = default;

void ZListFind::setSilenceTime(int milliseconds)
{
    silenceTime_ = milliseconds;
}

bool ZListFind::eventFilter(QObject* /*watched*/, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        if (!takeKey(*static_cast<QKeyEvent*>(event)))
            return false;
        event->accept();
        return true;
    case QEvent::Hide:
        end();
        // Nothing fades where it is not seen.
        if (bubble_ != nullptr)
            bubble_->hide();
        return false;
    case QEvent::FocusOut:
    case QEvent::Resize:
        end();
        return false;
    default:
        return false;
    }
}

bool ZListFind::takeKey(const QKeyEvent& event)
{
    const int code = PhoneKey::code(event);
    // Keys like Shift alone are on the way to another one.
    if (code == 0 && event.text().isEmpty())
        return false;
    const QString asked = askedBy(event, code);
    // Nor are the repeats of a key that was pressed elsewhere, in a menu or to close a message.
    if (event.isAutoRepeat() && (event.key() == heldKey_ || !asked.isEmpty()))
        return true;
    const bool endsOnly = code == PhoneKey::Clear && (isFinding_ || goesOn(event));
    heldKey_ = !asked.isEmpty() || endsOnly ? event.key() : NoKey;
    if (!asked.isEmpty()) {
        find(event, asked);
        return true;
    }
    end();
    watchPages(event, code);
    return endsOnly;
}

/// The character that a key adds to the search; empty for a key that is not for finding.
QString ZListFind::askedBy(const QKeyEvent& event, int code) const
{
    const QString character = characterOf(event, code);
    const char32_t first = firstOf(character);
    if (first >= U'1' && first <= U'9')
        return digitsAreTaken_() ? QString() : character;
    if (QChar::isLetter(first))
        return character;
    // What else names consist of can go on with a search, but not begin one.
    const bool isOther = first != U'0' && first != U'*' && first != U'#' && QChar::isPrint(first);
    return isFinding_ && isOther ? character : QString();
}

/// Whether a key belongs to the search before it.
bool ZListFind::goesOn(const QKeyEvent& event) const
{
    if (pressedAt_ == 0 || event.timestamp() == 0)
        return isFinding_;
    // Of a busy program the time may be over before a key arrives that was pressed in time.
    return (isFinding_ || endedByTime_) && event.timestamp() - pressedAt_ <= quint64(silenceTime_);
}

void ZListFind::find(const QKeyEvent& event, const QString& character)
{
    if (!finder_)
        finder_ = std::make_unique<NameFinder>();
    if (!goesOn(event))
        finder_->clear();
    finder_->press(character);
    isFinding_ = true;
    isPaging_ = false;
    endedByTime_ = false;
    pressedAt_ = event.timestamp();
    const NameFinder::Found found = finder_->find(list_->count(), list_->currentItem(), nameOf_);
    if (found.row >= 0)
        goTo(found.row);
    const QString text =
        found.row < 0 ? finder_->asked()
                      : QString::fromUtf8(nameOf_(found.row).sliced(found.from, found.length));
    const int shownRow = list_->currentItem() - list_->topItem();
    theBubble()->showNote(
        text, found.row < 0,
        QRect(0, shownRow * list_->rowHeight(), list_->width(), list_->rowHeight()));
    timer_->start(silenceTime_);
}

/// One that is not in view comes into the middle of it.
void ZListFind::goTo(int row)
{
    isMoving_ = true;
    if (!list_->itemVisible(row))
        list_->setBottomItem(row + list_->visibleItems() / 2);
    list_->setCurrentItem(row);
    isMoving_ = false;
}

void ZListFind::watchPages(const QKeyEvent& event, int code)
{
    if (code != PhoneKey::PageUp && code != PhoneKey::PageDown)
        return;
    const quint64 now = timeOf(event);
    const bool isQuick = pageTurnedAt_ != 0 && now - pageTurnedAt_ <= quint64(PagingTime);
    pageTurnedAt_ = now;
    if (!isQuick)
        return;
    isPaging_ = true;
    // At the end of the list the row stays, and so does the letter.
    showLetter();
}

void ZListFind::showLetter()
{
    const int row = list_->currentItem();
    const QString letter = row < 0 ? QString() : firstLetter(nameOf_(row));
    timer_->start(LetterTime);
    if (letter.isEmpty())
        theBubble()->leave();
    else
        theBubble()->showLetter(letter);
}

void ZListFind::timeIsOver()
{
    const bool wasFinding = isFinding_;
    end();
    endedByTime_ = wasFinding;
}

void ZListFind::end()
{
    isFinding_ = false;
    isPaging_ = false;
    endedByTime_ = false;
    timer_->stop();
    if (bubble_ != nullptr)
        bubble_->leave();
}

ZBubble* ZListFind::theBubble()
{
    if (bubble_ == nullptr)
        bubble_ = new ZBubble(list_);
    return bubble_;
}

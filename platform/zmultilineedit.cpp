#include "platform/zmultilineedit.h"

#include "platform/keymap.h"
#include "platform/shownname.h"
#include "platform/zkeypadinput.h"
#include "platform/ztheme.h"

#include <QClipboard>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>
#include <iterator>

namespace
{

/// The first of those that stand in the toolkit's field for invisible characters, in their order:
/// drawn as a mark, and in no name.
constexpr char16_t FirstStandIn = 0xdc00;
constexpr char16_t EndOfStandIns = FirstStandIn + std::size(InvisibleCharacters);
/// What becomes of a stand-in that was in the text already: as little a part of names.
constexpr QChar OtherHalf(EndOfStandIns);

bool isStandIn(QChar character)
{
    return character.unicode() >= FirstStandIn && character.unicode() < EndOfStandIns;
}

QChar standInFor(QChar invisible)
{
    const auto* place = std::find(std::begin(InvisibleCharacters), std::end(InvisibleCharacters),
                                  invisible.unicode());
    return QChar(char16_t(FirstStandIn + (place - std::begin(InvisibleCharacters))));
}

QString withStandIns(QString text)
{
    bool inPair = false;
    for (QChar& character : text) {
        const bool isHigh = character.isHighSurrogate();
        if (isStandIn(character) && !inPair)
            character = OtherHalf;
        else if (isInvisible(character) && !inPair)
            character = standInFor(character);
        inPair = isHigh;
    }
    return text;
}

QString withoutStandIns(QString text)
{
    // A half of a pair is not alone.
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isStandIn(text.at(i)) && (i == 0 || !text.at(i - 1).isHighSurrogate()))
            text[i] = QChar(InvisibleCharacters[text.at(i).unicode() - FirstStandIn]);
    }
    return text;
}

/// Whether a text without the dot before it may be an extension: what sentences have behind a dot
/// begins with a blank or has other signs.
bool looksLikeExtension(const QString& text)
{
    constexpr qsizetype Longest = 16;
    const QLatin1String signs("-_+~$#");
    return !text.isEmpty() && text.size() <= Longest &&
           std::all_of(text.begin(), text.end(), [signs](QChar character) {
               return character.isLetterOrNumber() || character.isMark() ||
                      signs.contains(character);
           });
}

/// Whether a number behind the dot goes on with what is before it: a version, a date, "No.5".
bool goesOnWithNumber(const QString& name, const QString& number)
{
    const bool isNumber = std::all_of(number.begin(), number.end(),
                                      [](QChar character) { return character.isDigit(); });
    return isNumber && (name.back().isDigit() || name.contains(QLatin1Char(' ')));
}

/// Where the extension of a name begins, with its dot; the name's end if it has none.
qsizetype extensionStart(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString extension = name.mid(dot + 1);
    const bool isOne =
        dot > 0 && looksLikeExtension(extension) && !goesOnWithNumber(name.left(dot), extension);
    if (!isOne)
        return name.size();
    const QLatin1String archive(".tar");
    return name.left(dot).endsWith(archive, Qt::CaseInsensitive) && dot > archive.size()
               ? dot - archive.size()
               : dot;
}

} // namespace

ZMultiLineEdit::ZMultiLineEdit(QWidget* parent, [[maybe_unused]] bool wrap,
                               [[maybe_unused]] int lines, const char* name)
    : QLineEdit(parent), keypad_(new ZKeypadInput(this))
{
    setObjectName(QLatin1String(name));
    setContextMenuPolicy(Qt::NoContextMenu);
    const ZTheme& theme = ZTheme::current();
    QPalette colours = palette();
    colours.setColor(QPalette::Base, theme.ground);
    colours.setColor(QPalette::Text, theme.text);
    colours.setColor(QPalette::Highlight, theme.selection);
    colours.setColor(QPalette::HighlightedText, theme.selectionText);
    setPalette(colours);
}

void ZMultiLineEdit::setText(const QString& text)
{
    keypad_->begin();
    QLineEdit::setText(withStandIns(text));
}

QString ZMultiLineEdit::text() const
{
    QString whole = QLineEdit::text();
    return withoutStandIns(whole.insert(cursorPosition(), keypad_->openLetter()));
}

void ZMultiLineEdit::copy() const
{
    if (hasSelectedText())
        QGuiApplication::clipboard()->setText(withoutStandIns(selectedText()));
}

void ZMultiLineEdit::cut()
{
    copy();
    if (hasSelectedText())
        del();
}

void ZMultiLineEdit::paste()
{
    keypad_->settle();
    QString text = QGuiApplication::clipboard()->text();
    static const QRegularExpression lastBreaks(QStringLiteral("[\\r\\n]+$"));
    static const QRegularExpression lineBreak(QStringLiteral("\\r\\n|\\r|\\n"));
    text.remove(lastBreaks);
    text.replace(lineBreak, QStringLiteral(" "));
    if (!text.isEmpty())
        insert(withStandIns(text));
}

void ZMultiLineEdit::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    const bool isPlainLeft =
        PhoneKey::code(*event) == PhoneKey::Left && (event->modifiers() & ~Qt::KeypadModifier) == 0;
    if (isPlainLeft && hasSelectedText() && selectedText() == QLineEdit::text())
        setCursorPosition(int(extensionStart(QLineEdit::text())));
    else if (event->matches(QKeySequence::Paste))
        paste();
    else if (event->matches(QKeySequence::Copy))
        copy();
    else if (event->matches(QKeySequence::Cut))
        cut();
    else
        QLineEdit::keyPressEvent(event);
}

/// When something above it goes, the toolkit moves the focus as the Tab key does, which would
/// select all of the text.
void ZMultiLineEdit::focusInEvent(QFocusEvent* event)
{
    const bool isByTab =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    QFocusEvent other(QEvent::FocusIn, isByTab ? Qt::OtherFocusReason : event->reason());
    QLineEdit::focusInEvent(&other);
}

/// The selection stays while a menu has the focus, whose items are about it; the toolkit keeps it
/// only for menus of its own.
void ZMultiLineEdit::focusOutEvent(QFocusEvent* /*event*/)
{
    QFocusEvent toMenu(QEvent::FocusOut, Qt::PopupFocusReason);
    QLineEdit::focusOutEvent(&toMenu);
}

/// The frame is ours, whatever the toolkit's looks like on this system.
void ZMultiLineEdit::paintEvent(QPaintEvent* event)
{
    constexpr int ToolkitFrame = 2;
    constexpr qreal Corner = 2;
    QLineEdit::paintEvent(event);
    const ZTheme& theme = ZTheme::current();
    QPainter painter(this);
    painter.setPen(QPen(theme.ground, ToolkitFrame));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(theme.outline);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Corner, Corner);
}

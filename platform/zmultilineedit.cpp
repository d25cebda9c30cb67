#include "platform/zmultilineedit.h"

#include <QClipboard>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QRegularExpression>

namespace
{

/// Stands in the toolkit's field for a byte-order mark: drawn as a mark, and in no name.
constexpr QChar StandIn(0xdc00);
/// What becomes of a stand-in that was in the text already: as little a part of names.
constexpr QChar OtherHalf(0xdc01);

QString withStandIns(QString text)
{
    bool inPair = false;
    for (QChar& character : text) {
        const bool isHigh = character.isHighSurrogate();
        if (character == StandIn && !inPair)
            character = OtherHalf;
        else if (character == QChar(QChar::ByteOrderMark) && !inPair)
            character = StandIn;
        inPair = isHigh;
    }
    return text;
}

QString withoutStandIns(QString text)
{
    // A half of a pair is not alone.
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == StandIn && (i == 0 || !text.at(i - 1).isHighSurrogate()))
            text[i] = QChar(QChar::ByteOrderMark);
    }
    return text;
}

} // namespace

ZMultiLineEdit::ZMultiLineEdit(QWidget* parent, [[maybe_unused]] bool wrap,
                               [[maybe_unused]] int lines, const char* name)
    : QLineEdit(parent)
{
    setObjectName(QLatin1String(name));
    setContextMenuPolicy(Qt::NoContextMenu);
}

void ZMultiLineEdit::setText(const QString& text)
{
    QLineEdit::setText(withStandIns(text));
}

QString ZMultiLineEdit::text() const
{
    return withoutStandIns(QLineEdit::text());
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
    if (event->matches(QKeySequence::Paste))
        paste();
    else if (event->matches(QKeySequence::Copy))
        copy();
    else if (event->matches(QKeySequence::Cut))
        cut();
    else
        QLineEdit::keyPressEvent(event);
}

/// The selection stays while a menu has the focus, whose items are about it; the toolkit keeps it
/// only for menus of its own.
void ZMultiLineEdit::focusOutEvent(QFocusEvent* /*event*/)
{
    QFocusEvent toMenu(QEvent::FocusOut, Qt::PopupFocusReason);
    QLineEdit::focusOutEvent(&toMenu);
}

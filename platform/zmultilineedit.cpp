#include "platform/zmultilineedit.h"

#include <QClipboard>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QRegularExpression>

ZMultiLineEdit::ZMultiLineEdit(QWidget* parent, [[maybe_unused]] bool wrap,
                               [[maybe_unused]] int lines, const char* name)
    : QLineEdit(parent)
{
    setObjectName(QLatin1String(name));
    setContextMenuPolicy(Qt::NoContextMenu);
}

void ZMultiLineEdit::paste()
{
    QString text = QGuiApplication::clipboard()->text();
    static const QRegularExpression lastBreaks(QStringLiteral("[\\r\\n]+$"));
    static const QRegularExpression lineBreak(QStringLiteral("\\r\\n|\\r|\\n"));
    text.remove(lastBreaks);
    text.replace(lineBreak, QStringLiteral(" "));
    if (!text.isEmpty())
        insert(text);
}

void ZMultiLineEdit::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Paste)) {
        event->accept();
        paste();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

/// The selection stays while a menu has the focus, whose items are about it; the toolkit keeps it
/// only for menus of its own.
void ZMultiLineEdit::focusOutEvent(QFocusEvent* /*event*/)
{
    QFocusEvent toMenu(QEvent::FocusOut, Qt::PopupFocusReason);
    QLineEdit::focusOutEvent(&toMenu);
}

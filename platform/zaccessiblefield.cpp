// What an entry field tells programs that read the screen.

#include "platform/zaccessiblewidget.h"
#include "platform/zkeypadinput.h"
#include "platform/zmultilineedit.h"

#include <QTextLayout>

#include <algorithm>

/// The toolkit has one for its fields, but does not map places to where a magnified screen is seen,
/// nor knows of a text that has scrolled. Offsets count UTF-16 units of the text without the letter
/// that a further press may still change.
class ZMultiLineEdit::Accessible final : public ZAccessibleWidget,
                                         public QAccessibleTextInterface,
                                         public QAccessibleEditableTextInterface
{
public:
    explicit Accessible(ZMultiLineEdit* field) : ZAccessibleWidget(field, QAccessible::EditableText)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? settledText() : ZAccessibleWidget::text(kind);
    }
    void setText(QAccessible::Text kind, const QString& text) override
    {
        if (kind == QAccessible::Value)
            replaceText(0, characterCount(), text);
        else
            ZAccessibleWidget::setText(kind, text);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = ZAccessibleWidget::state();
        state.editable = true;
        state.selectableText = true;
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface*>(this);
        if (type == QAccessible::EditableTextInterface)
            return static_cast<QAccessibleEditableTextInterface*>(this);
        return ZAccessibleWidget::interface_cast(type);
    }

    // What is selected, one piece at most, and the cursor.

    int selectionCount() const override { return field().hasSelectedText() ? 1 : 0; }
    void selection(int /*index*/, int* start, int* end) const override
    {
        *start = std::max(field().selectionStart(), 0);
        *end = std::max(field().selectionEnd(), 0);
    }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int /*index*/) override { field().deselect(); }
    void setSelection(int /*index*/, int start, int end) override
    {
        field().setSelection(start, end - start);
    }
    int cursorPosition() const override { return field().cursorPosition(); }
    void setCursorPosition(int offset) override { field().setCursorPosition(offset); }
    void scrollToSubstring(int start, int end) override
    {
        field().setCursorPosition(end);
        field().setCursorPosition(start);
    }

    // The text.

    QString text(int start, int end) const override
    {
        return settledText().mid(start, std::max(end - start, 0));
    }
    int characterCount() const override { return int(settledText().size()); }
    QString attributes(int offset, int* start, int* end) const override
    {
        *start = *end = offset;
        return {};
    }
    void deleteText(int start, int end) override { replaceText(start, end, {}); }
    void insertText(int offset, const QString& text) override { replaceText(offset, offset, text); }
    void replaceText(int start, int end, const QString& text) override;

    // Where it is seen.

    QRect characterRect(int offset) const override { return onDisplay(placeOf(offset)); }
    int offsetAtPoint(const QPoint& point) const override;

private:
    ZMultiLineEdit& field() const { return *static_cast<ZMultiLineEdit*>(widget()); }
    const QString& openLetter() const { return field().keypad().openLetter(); }
    QString settledText() const
    {
        return field().text().remove(field().cursorPosition(), openLetter().size());
    }
    QRect placeOf(int offset) const;
};

void ZMultiLineEdit::Accessible::replaceText(int start, int end, const QString& text)
{
    field().keypad().settle();
    const QString whole = settledText();
    const int from = std::clamp(start, 0, int(whole.size()));
    const int behind = std::clamp(end, from, int(whole.size()));
    field().setText(whole.left(from) + text + whole.mid(behind));
    field().setCursorPosition(from + int(text.size()));
}

/// In the field's coordinates; outside of it for what has scrolled away, and empty if there is no
/// such character.
QRect ZMultiLineEdit::Accessible::placeOf(int offset) const
{
    const int cursor = field().cursorPosition();
    const int open = int(openLetter().size());
    const QString shown = field().displayText().insert(cursor, openLetter());
    int first = offset < cursor ? offset : offset + open;
    if (offset < 0 || first >= shown.size())
        return {};
    QTextLayout layout(shown, field().font());
    // A letter that is underlined is drawn by itself, so no pair with it is brought closer.
    QTextCharFormat underlined;
    underlined.setUnderlineStyle(QTextCharFormat::SingleUnderline);
    layout.setFormats({{cursor, open, underlined}});
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    if (!layout.isValidCursorPosition(first))
        first = layout.previousCursorPosition(first);
    const int from = qRound(line.cursorToX(first));
    const int to = qRound(line.cursorToX(layout.nextCursorPosition(first)));
    // The line lies where the cursor is in it.
    const QRect caret = field().inputMethodQuery(Qt::ImCursorRectangle).toRect();
    const int start = caret.x() + caret.width() / 2 - qRound(line.cursorToX(cursor + open));
    return {start + std::min(from, to), caret.y(), std::abs(to - from), caret.height()};
}

int ZMultiLineEdit::Accessible::offsetAtPoint(const QPoint& point) const
{
    const QPoint inside = inWidget(point);
    if (!field().rect().contains(inside))
        return -1;
    // The toolkit knows which gap between two characters is the nearest.
    const int gap = field().cursorPositionAt(inside);
    const int cursor = field().cursorPosition();
    const int nearest = gap <= cursor ? gap : std::max(cursor, gap - int(openLetter().size()));
    for (const int offset : {nearest - 1, nearest}) {
        if (placeOf(offset).contains(inside))
            return offset;
    }
    return -1;
}

QAccessibleInterface* ZMultiLineEdit::makeAccessible()
{
    return new Accessible(this);
}

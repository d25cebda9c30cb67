#pragma once

#include "platform/zaccessible.h"

#include <QWidget>

/// A small note over a part of a widget: what is being looked for, or in one large letter where one
/// is. It takes no keys and no pointer. Its text is its accessible name.
class ZBubble : public QWidget, public ZAccessibleSource
{
    Q_OBJECT

public:
    /// Pixels.
    static constexpr int NoteHeight = 26;
    static constexpr int LetterSize = 48;
    static constexpr int Margin = 6; ///< to the edges of the widget that it is over

    /// Hidden until something is shown.
    explicit ZBubble(QWidget* over);

    /// Shows a text in the middle of the lower edge of the widget that it is over, unless that
    /// would hide some of `spared` (in its coordinates): then at the upper edge. A text that is too
    /// long loses its beginning. With `isWarning` there is a sign before it.
    void showNote(const QString& text, bool isWarning, const QRect& spared);
    /// Shows a large letter at the right.
    void showLetter(const QString& letter);

    QString text() const { return accessibleName(); }
    bool isWarning() const { return isWarning_; }
    bool isLetter() const { return isLetter_; }

    QAccessibleInterface* makeAccessible() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showAt(const QRect& place, const QString& text);
    void paintSign(QPainter& painter, const QRect& area) const;

    bool isWarning_ = false;
    bool isLetter_ = false;
};

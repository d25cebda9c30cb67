#pragma once

#include "platform/zaccessible.h"

#include <QWidget>

class QVariantAnimation;

/// A small note over a part of a widget: what is being looked for, or in one large letter where one
/// is. It takes no keys and no pointer. Its text is its accessible name. Where there is motion it
/// comes and goes by fading; what it says is seen at once all the same.
class ZBubble : public QWidget, public ZAccessibleSource
{
    Q_OBJECT

public:
    /// Pixels.
    static constexpr int NoteHeight = 26;
    static constexpr int LetterSize = 48;
    static constexpr int Margin = 6; ///< to the edges of the widget that it is over
    static constexpr int FadeMilliseconds = 80;

    /// Hidden until something is shown.
    explicit ZBubble(QWidget* over);

    /// Shows a text in the middle of the lower edge of the widget that it is over, unless that
    /// would hide some of `spared` (in its coordinates): then at the upper edge. A text that is too
    /// long loses its beginning. With `isWarning` there is a sign before it.
    void showNote(const QString& text, bool isWarning, const QRect& spared);
    /// Shows a large letter at the right.
    void showLetter(const QString& letter);

    /// Hides it, where there is motion once it has faded.
    void leave();

    QString text() const { return accessibleName(); }
    bool isWarning() const { return isWarning_; }
    bool isLetter() const { return isLetter_; }
    /// Whether it is about to be hidden.
    bool isLeaving() const { return isLeaving_; }

    QAccessibleInterface* makeAccessible() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void showAt(const QRect& place, const QString& text);
    void fadeTo(double opacity);
    void settle();

    QVariantAnimation* fade_ = nullptr; ///< made with the first motion
    double opacity_ = 1;
    bool isLeaving_ = false;
    bool isWarning_ = false;
    bool isLetter_ = false;
};

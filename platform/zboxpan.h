#pragma once

#include "platform/ztapordrag.h"

#include <QHash>
#include <QObject>

class QWidget;

/// Shows the boxes of a screen that are higher than it from their top, and pans them: with Up and
/// Down, the wheel and a finger that drags. A mark at the right of a box says how much of it is in
/// view. A box places itself as one that fits and knows nothing of all this.
class ZBoxPan : public QObject
{
    Q_OBJECT

public:
    /// By so many pixels a key pans.
    static constexpr int Step = 40;

    /// The boxes are children of `screen`, which owns this.
    explicit ZBoxPan(QWidget* screen);

    /// Looks after a box from now on. Those that fit are left alone.
    void watch(QWidget* box);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Mark;

    bool isHigh(const QWidget* box) const;
    void fit(QWidget* box);
    void leave(const QObject* box);
    void panTo(QWidget* box, int top);
    bool takeKey(QWidget* box, const QEvent& event);
    bool takeFinger(QWidget* box, const QEvent& event);

    QWidget* screen_;
    QHash<const QObject*, int> tops_;    ///< of the boxes that are panned, at most 0
    QHash<const QObject*, Mark*> marks_; ///< of the same boxes
    ZTapOrDrag finger_;
};

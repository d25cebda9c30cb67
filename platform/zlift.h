#pragma once

#include <QWidget>

/// Lifts a widget, which fills its rectangle, from what it lies over: a shadow of 2 pixels around
/// it and round corners. It is a widget of its own below the other one, so that this one stays
/// opaque and nothing under it is painted again with it; in its corners, where it must not paint,
/// it gets a mask. It shows, hides, moves and goes with the widget.
class ZLift : public QWidget
{
    Q_OBJECT

public:
    static constexpr int Corner = 2;
    static constexpr int Shadow = 2;

    /// `ground` fills the corners, `outline` is a line of one pixel along the edge, which the
    /// widget draws, too.
    ZLift(QWidget* lifted, const QColor& ground, const QColor& outline);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void follow();

    QWidget* lifted_;
    QColor ground_;
    QColor outline_;
};

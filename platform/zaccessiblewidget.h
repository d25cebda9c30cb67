#pragma once

#include <QAccessibleWidget>

/// What speaks for a widget of the screen. It is where it is seen, at whatever scale
/// (ZScreenFrame).
class ZAccessibleWidget : public QAccessibleWidget
{
public:
    explicit ZAccessibleWidget(QWidget* widget, QAccessible::Role role = QAccessible::Client,
                               const QString& name = {});

    QRect rect() const override;
    QAccessibleInterface* childAt(int x, int y) const override;

protected:
    ~ZAccessibleWidget() override = default;

    /// Where a part of the widget is on the display, and what of the widget is at a point there.
    QRect onDisplay(const QRect& part) const;
    QPoint inWidget(QPoint point) const;
};

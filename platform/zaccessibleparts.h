#pragma once

#include "platform/zaccessiblewidget.h"

#include <QHash>
#include <QRect>

/// What speaks for a widget that draws parts which are no widgets: rows, tabs, menu items. Each is
/// a child, numbered from 0 on; it is made when somebody asks for it, however many there are.
/// Behind them come the widgets inside that are worth a mention.
///
/// Rectangles and points are in the widget's coordinates.
class ZAccessibleParts : public ZAccessibleWidget
{
public:
    ZAccessibleParts(QWidget* widget, QAccessible::Role role);

    virtual int partCount() const = 0;
    virtual QAccessible::Role partRole(int part) const = 0;
    virtual QString partText(int part, QAccessible::Text kind) const = 0;
    /// Whether it can be seen and whether the widget has the focus is added to it.
    virtual QAccessible::State partState(int part) const = 0;
    virtual QRect partRect(int part) const = 0;
    /// What can be done with it now, as QAccessibleActionInterface calls it. What is done is done
    /// by the event loop, and only if the part is still there and the action too.
    virtual QStringList partActions(int part) const = 0;
    virtual void actOn(int part, const QString& action) = 0;
    /// How far the work is that a part tells of, 0 to 100; less than 0 for all others.
    virtual int partPercent(int /*part*/) const { return -1; }
    /// The part at a point; -1 for none.
    virtual int partAt(QPoint point) const = 0;
    /// Where one is; -1 for nowhere.
    virtual int currentPart() const { return -1; }

    QAccessible::State wholePartState(int part) const;
    QRect partRectOnDisplay(int part) const;
    /// The parts are not what they were: those that were asked for are invalid from now on.
    void forgetParts();

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;

protected:
    ~ZAccessibleParts() override;

    /// The widget, as what it is; nullptr while it is being destroyed and is that no more.
    template<typename Widget>
    Widget* as() const
    {
        return dynamic_cast<Widget*>(object());
    }
    /// Widgets inside the widget that are its children here, too.
    virtual QWidgetList otherChildren() const { return {}; }

private:
    void endForgotten();

    mutable QHash<int, QAccessible::Id> parts_; ///< those that were asked for
    QList<QAccessible::Id> forgotten_;          ///< not ended yet
};

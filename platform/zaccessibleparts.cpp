#include "platform/zaccessibleparts.h"

#include <QWidget>

#include <utility>

namespace
{

/// One part, which asks its owner for everything. The owner ends it before itself.
class Part final : public QAccessibleInterface,
                   public QAccessibleActionInterface,
                   public QAccessibleValueInterface
{
public:
    Part(ZAccessibleParts* owner, int number) : owner_(owner), number_(number) {}

    const ZAccessibleParts* owner() const { return owner_; }
    int number() const { return number_; }

    /// What it was is no more, though somebody may be asking about it right now.
    void setGone() { isGone_ = true; }
    bool isValid() const override
    {
        return !isGone_ && owner_->isValid() && number_ < owner_->partCount();
    }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return owner_->window(); }
    QAccessibleInterface* parent() const override { return owner_; }
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }

    QString text(QAccessible::Text kind) const override
    {
        return isValid() ? owner_->partText(number_, kind) : QString();
    }
    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}
    QRect rect() const override { return isValid() ? owner_->partRectOnDisplay(number_) : QRect(); }
    QAccessible::Role role() const override
    {
        return isValid() ? owner_->partRole(number_) : QAccessible::NoRole;
    }
    QAccessible::State state() const override
    {
        if (isValid())
            return owner_->wholePartState(number_);
        QAccessible::State gone;
        gone.invalid = true;
        return gone;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ActionInterface)
            return static_cast<QAccessibleActionInterface*>(this);
        const bool hasValue = type == QAccessible::ValueInterface && percent() >= 0;
        return hasValue ? static_cast<QAccessibleValueInterface*>(this) : nullptr;
    }
    QVariant currentValue() const override { return percent(); }
    void setCurrentValue(const QVariant& /*value*/) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }
    QStringList actionNames() const override
    {
        return isValid() ? owner_->partActions(number_) : QStringList();
    }
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString& /*name*/) const override
    {
        const QString key = text(QAccessible::Accelerator);
        return key.isEmpty() ? QStringList() : QStringList(key);
    }

private:
    int percent() const { return isValid() ? owner_->partPercent(number_) : -1; }

    ZAccessibleParts* owner_;
    int number_;
    bool isGone_ = false;
};

/// An action may wait for an answer, which whoever asked for it is to give.
void Part::doAction(const QString& name)
{
    if (!actionNames().contains(name))
        return;
    const QAccessible::Id id = QAccessible::uniqueId(this);
    const auto act = [id, name] {
        auto* part = dynamic_cast<Part*>(QAccessible::accessibleInterface(id));
        if (part != nullptr && part->actionNames().contains(name))
            part->owner_->actOn(part->number_, name);
    };
    QMetaObject::invokeMethod(owner_->object(), act, Qt::QueuedConnection);
}

} // namespace

ZAccessibleParts::ZAccessibleParts(QWidget* widget, QAccessible::Role role)
    : ZAccessibleWidget(widget, role)
{
}

ZAccessibleParts::~ZAccessibleParts()
{
    for (const QAccessible::Id id : std::as_const(parts_))
        QAccessible::deleteAccessibleInterface(id);
    endForgotten();
}

/// They are ended by the event loop: that the widget has changed may have been found out by asking
/// one of them.
void ZAccessibleParts::forgetParts()
{
    if (parts_.isEmpty())
        return;
    for (const QAccessible::Id id : std::exchange(parts_, {})) {
        static_cast<Part*>(QAccessible::accessibleInterface(id))->setGone();
        forgotten_.append(id);
    }
    QMetaObject::invokeMethod(object(), [this] { endForgotten(); }, Qt::QueuedConnection);
}

void ZAccessibleParts::endForgotten()
{
    for (const QAccessible::Id id : std::exchange(forgotten_, {}))
        QAccessible::deleteAccessibleInterface(id);
}

QAccessible::State ZAccessibleParts::wholePartState(int part) const
{
    QAccessible::State state = partState(part);
    const QWidget* shown = widget();
    state.invisible = state.invisible || !shown->isVisible();
    state.offscreen = state.offscreen || !shown->rect().intersects(partRect(part));
    if (part == currentPart() && state.focusable)
        state.focused = shown->hasFocus();
    return state;
}

QRect ZAccessibleParts::partRectOnDisplay(int part) const
{
    return onDisplay(partRect(part));
}

int ZAccessibleParts::childCount() const
{
    return partCount() + int(otherChildren().size());
}

QAccessibleInterface* ZAccessibleParts::child(int index) const
{
    const int parts = partCount();
    if (index < 0)
        return nullptr;
    if (index >= parts)
        return QAccessible::queryAccessibleInterface(otherChildren().value(index - parts));
    if (const QAccessible::Id known = parts_.value(index))
        return QAccessible::accessibleInterface(known);
    auto* made = new Part(const_cast<ZAccessibleParts*>(this), index);
    parts_.insert(index, QAccessible::registerAccessibleInterface(made));
    return made;
}

int ZAccessibleParts::indexOfChild(const QAccessibleInterface* child) const
{
    const auto* part = dynamic_cast<const Part*>(child);
    if (part != nullptr)
        return part->owner() == this ? part->number() : -1;
    auto* inside = child != nullptr ? qobject_cast<QWidget*>(child->object()) : nullptr;
    const qsizetype place = otherChildren().indexOf(inside);
    return place < 0 ? -1 : partCount() + int(place);
}

QAccessibleInterface* ZAccessibleParts::childAt(int x, int y) const
{
    const QPoint point = inWidget(QPoint(x, y));
    if (!widget()->isVisible() || !widget()->rect().contains(point))
        return nullptr;
    for (QWidget* other : otherChildren()) {
        if (other->isVisible() && other->geometry().contains(point))
            return QAccessible::queryAccessibleInterface(other);
    }
    return child(partAt(point));
}

QAccessibleInterface* ZAccessibleParts::focusChild() const
{
    if (!widget()->hasFocus())
        return ZAccessibleWidget::focusChild();
    const int current = currentPart();
    return current >= 0 ? child(current) : QAccessible::queryAccessibleInterface(object());
}

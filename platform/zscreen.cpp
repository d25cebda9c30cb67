#include "platform/zscreen.h"

#include "platform/displayturn.h"
#include "platform/keymap.h"
#include "platform/vncdisplay.h"
#include "platform/x11focus.h"
#include "platform/zboxpan.h"
#include "platform/zscreenframe.h"
#include "platform/zskinservice.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPaintEvent>

#include <algorithm>
#include <memory>
#include <utility>

namespace
{

QPointer<ZScreen> theScreen;

bool isPointerEvent(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
        return true;
    default:
        return false;
    }
}

} // namespace

ZScreen::MainInputPause::MainInputPause() : screen_(instance())
{
    screen_->pauseMainInput(1);
}

ZScreen::MainInputPause::~MainInputPause()
{
    if (screen_)
        screen_->pauseMainInput(-1);
}

void ZScreen::setPlace(const QByteArray& place)
{
    ZScreenFrame::setPlace(place);
}

QByteArray ZScreen::placeOnDisplay()
{
    return theScreen ? theScreen->frame_->place() : QByteArray();
}

ZScreen* ZScreen::instance()
{
    if (!theScreen) {
        auto frame = std::make_unique<ZScreenFrame>();
        theScreen = new ZScreen(frame.release());
    }
    return theScreen;
}

void ZScreen::destroyInstance()
{
    if (theScreen)
        delete theScreen->window();
}

ZScreen::ZScreen(ZScreenFrame* frame)
    : QWidget(frame),
      frame_(frame),
      x11Focus_(std::make_unique<X11Focus>(*frame)),
      pan_(new ZBoxPan(this))
{
    setObjectName(QStringLiteral("ZScreen"));
    resize(Width, Height);
    frame->setContent(this);
    connect(frame, &ZScreenFrame::scaleChanged, this, &ZScreen::densityChanged);
    // Not from in there: who is told may ask a question, and the toolkit takes a second request
    // that comes while the first is handled as agreed to.
    connect(frame, &ZScreenFrame::closeRequested, this, &ZScreen::closeRequested,
            Qt::QueuedConnection);
    setFocusPolicy(Qt::NoFocus);
    if (DisplayTurn::isNeeded())
        takeTurns();
    if (VncDisplay::isUsed()) {
        vnc_ = std::make_unique<VncDisplay>();
        connect(vnc_.get(), &VncDisplay::guestShown, this, &ZScreen::guestShown);
    }
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { focusMoved(now); });
}

ZScreen::~ZScreen()
{
    qApp->removeEventFilter(this);
    disconnect(qApp, nullptr, this, nullptr);
    const QList<Entry> entries = std::exchange(placed_, {});
    stack_.clear();
    for (const Entry& entry : entries) {
        if (entry.widget)
            disconnect(entry.widget, nullptr, this, nullptr);
    }
    // They go while the screen is still there for them; one may take others with it.
    for (const Entry& entry : entries)
        delete entry.widget.data();
}

void ZScreen::place(QWidget* widget, Layer layer)
{
    placed_.append({widget, layer, nullptr, {}});
    widget->installEventFilter(this);
    if (layer == Layer::Box)
        pan_->watch(widget);
    connect(widget, &QObject::destroyed, this, [this](QObject* gone) { widgetGone(gone); });
}

void ZScreen::setSoftKeys(const QWidget* widget, const SoftKeys& keys)
{
    Entry* entry = entryOf(widget);
    if (entry == nullptr)
        return;
    entry->softKeys = keys;
    if (widget == active())
        emit softKeysChanged();
}

ZScreen::SoftKeys ZScreen::softKeys() const
{
    const QWidget* top = active();
    const auto entry = std::find_if(placed_.begin(), placed_.end(), [top](const Entry& each) {
        return top != nullptr && each.widget == top;
    });
    return entry == placed_.end() ? SoftKeys() : entry->softKeys;
}

void ZScreen::takeTurns()
{
    turn_ = std::make_unique<DisplayTurn>();
    connect(turn_.get(), &DisplayTurn::changed, this, [this] {
        window()->setUpdatesEnabled(!isLent());
        window()->update();
    });
}

bool ZScreen::isLent() const
{
    return turn_ != nullptr && !turn_->isOurs();
}

void ZScreen::pauseMainInput(int change)
{
    mainInputPauses_ += change;
    emit softKeysChanged();
}

QWidget* ZScreen::active() const
{
    return stack_.isEmpty() ? nullptr : stack_.last();
}

bool ZScreen::isActive(const QWidget* widget) const
{
    const QWidget* top = active();
    return top != nullptr && widget != nullptr && (top == widget || top->isAncestorOf(widget));
}

void ZScreen::raiseWindow()
{
    if (stack_.isEmpty())
        return;
    window()->raise();
    takeKeyboard();
}

void ZScreen::takeKeyboard()
{
    window()->activateWindow();
    x11Focus_->take();
}

ZScreen::Entry* ZScreen::entryOf(const QWidget* widget)
{
    for (Entry& entry : placed_) {
        if (entry.widget == widget || (entry.widget && entry.widget->isAncestorOf(widget)))
            return &entry;
    }
    return nullptr;
}

bool ZScreen::eventFilter(QObject* watched, QEvent* event)
{
    if (!watched->isWidgetType())
        return false;
    auto* widget = static_cast<QWidget*>(watched);
    switch (event->type()) {
    case QEvent::ShowToParent:
        if (widget->parentWidget() == this)
            widgetShown(widget);
        return false;
    case QEvent::HideToParent:
        if (widget->parentWidget() == this)
            widgetHidden(widget);
        return false;
    case QEvent::Paint:
        return frame_->takesOver(*widget, *static_cast<QPaintEvent*>(event));
    case QEvent::KeyPress:
        KeyMap::instance().notice(*static_cast<QKeyEvent*>(event));
        return blocksInput(widget);
    case QEvent::ShortcutOverride:
        return blocksInput(widget);
    case QEvent::ContextMenu:
        // The toolkit's own menus would be windows beside the screen.
        return widget == this || isAncestorOf(widget);
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (widget != this && !blocksInput(widget))
            return false;
        if (!tapSoftKey(
                widget->mapTo(this, static_cast<QMouseEvent*>(event)->position().toPoint())))
            emit pressedOutside();
        return true;
    default:
        return isPointerEvent(event->type()) && blocksInput(widget);
    }
}

bool ZScreen::blocksInput(const QWidget* receiver) const
{
    if (receiver == this || !isAncestorOf(receiver))
        return false;
    if (isLent() || !isActive(receiver))
        return true;
    const auto entry = std::find_if(placed_.begin(), placed_.end(),
                                    [this](const Entry& each) { return each.widget == active(); });
    return mainInputPauses_ > 0 && entry != placed_.end() && entry->layer == Layer::Main;
}

/// A bar below the active widget is inert, but what stands there is the active one's.
bool ZScreen::tapSoftKey(QPoint point)
{
    if (!rect().contains(point) || point.y() < Height - ZSkinService::SoftKeyHeight)
        return false;
    const size_t key = point.x() < Width / 2 ? 0 : 1;
    const SoftKeys keys = softKeys();
    if (keys.tapped == nullptr || keys.texts.at(key).isEmpty())
        return false;
    keys.tapped(int(key));
    return true;
}

void ZScreen::widgetShown(QWidget* widget)
{
    const Entry* entry = entryOf(widget);
    if (entry == nullptr || stack_.contains(widget))
        return;
    // Hiding a widget moves the focus somewhere, so what had it before is noted now.
    if (QWidget* top = active())
        entryOf(top)->focus = top->focusWidget();
    if (entry->layer == Layer::Box) {
        stack_.append(widget);
    } else {
        const auto firstBox = std::find_if(stack_.begin(), stack_.end(), [this](QWidget* other) {
            return entryOf(other)->layer == Layer::Box;
        });
        stack_.insert(firstBox, widget);
    }
    raiseFrom(widget);
    updateWindow();
    giveFocus();
    emit softKeysChanged();
}

void ZScreen::widgetHidden(QWidget* widget)
{
    if (!stack_.removeOne(widget))
        return;
    updateWindow();
    giveFocus();
    emit softKeysChanged();
}

void ZScreen::widgetGone(QObject* widget)
{
    placed_.removeIf([](const Entry& entry) { return entry.widget.isNull(); });
    if (stack_.removeIf([widget](QWidget* other) { return other == widget; }) > 0) {
        updateWindow();
        giveFocus();
        emit softKeysChanged();
    }
}

void ZScreen::updateWindow()
{
    if (stack_.isEmpty()) {
        window()->hide();
        if (turn_)
            turn_->hide();
    } else if (window()->isHidden()) {
        if (turn_)
            turn_->show();
        if (vnc_)
            vnc_->show();
        window()->show();
        x11Focus_->watch();
        takeKeyboard();
    }
}

/// Puts a widget and those above it in their order. Those below are not touched: raising one would
/// paint all of it again.
void ZScreen::raiseFrom(QWidget* widget)
{
    for (qsizetype i = stack_.indexOf(widget); i < stack_.size(); ++i)
        stack_.at(i)->raise();
}

void ZScreen::giveFocus()
{
    QWidget* top = active();
    if (top == nullptr || givingFocus_)
        return;
    givingFocus_ = true;
    QWidget* target = entryOf(top)->focus;
    if (target == nullptr)
        target = top->focusWidget();
    (target != nullptr ? target : top)->setFocus(Qt::OtherFocusReason);
    givingFocus_ = false;
}

void ZScreen::focusMoved(QWidget* now)
{
    const QWidget* top = active();
    // The toolkit hands the focus of a widget that is being hidden to any other; not our business.
    if (now == nullptr || top == nullptr || top->isHidden() || !isAncestorOf(now))
        return;
    Entry* entry = entryOf(now);
    if (entry == nullptr)
        return;
    entry->focus = now;
    if (!isActive(now))
        giveFocus();
}

#include "platform/zscreen.h"

#include "platform/keymap.h"
#include "platform/x11focus.h"
#include "platform/zaccessible.h"
#include "platform/zboxpan.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <utility>

namespace
{

QPointer<ZScreen> theScreen;
const char* scaleVariable = nullptr;
constexpr double SmallestScale = 0.25;
constexpr double LargestScale = 16;

/// Platforms of the toolkit that show one full-screen window and have no window manager.
bool isBareDisplay(const QString& platform)
{
    static const QStringList bare{"linuxfb",  "eglfs", "directfb",
                                  "kmsconvt", "vnc",   "vkkhrdisplay"};
    return bare.contains(platform);
}

QByteArray& wantedPlace()
{
    static QByteArray place;
    return place;
}

/// The corner that the window is wanted at, in the toolkit's pixels.
std::optional<QPoint> wantedCorner(double density)
{
    const QList<QByteArray> numbers = wantedPlace().split(',');
    bool isX = false;
    bool isY = false;
    const QPoint corner(numbers.value(0).toInt(&isX), numbers.value(1).toInt(&isY));
    if (numbers.size() != 2 || !isX || !isY)
        return std::nullopt;
    return (QPointF(corner) / density).toPoint();
}

/// The window around the screen. A window manager or a bare display may make it larger than the
/// screen, which then sits in its middle on black.
class ZScreenFrame : public QWidget, public ZAccessibleSource
{
public:
    ZScreenFrame() : QWidget(nullptr)
    {
        setWindowTitle(QGuiApplication::applicationDisplayName());
        setAttribute(Qt::WA_OpaquePaintEvent);
        if (isBareDisplay(QGuiApplication::platformName())) {
            setWindowState(Qt::WindowFullScreen);
            return;
        }
        setFixedSize(ZScreen::Width, ZScreen::Height);
        if (const auto corner = wantedCorner(devicePixelRatioF()))
            move(*corner);
    }

    QAccessibleInterface* makeAccessible() override
    {
        return new QAccessibleWidget(this, QAccessible::Window, windowTitle());
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter(this).fillRect(rect(), ZTheme::current().bar);
    }

    void resizeEvent(QResizeEvent* /*event*/) override
    {
        if (theScreen)
            theScreen->move((width() - ZScreen::Width) / 2, (height() - ZScreen::Height) / 2);
    }

    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        // Not from in here: who is told may ask a question, and the toolkit takes a second request
        // that comes while this one is handled as agreed to.
        if (theScreen)
            QMetaObject::invokeMethod(theScreen, &ZScreen::closeRequested, Qt::QueuedConnection);
    }
};

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

double scaleFromVariable()
{
    if (scaleVariable == nullptr || !qEnvironmentVariableIsSet(scaleVariable))
        return 0;
    const QByteArray text = qgetenv(scaleVariable);
    bool ok = false;
    const double scale = text.toDouble(&ok);
    if (ok && scale >= SmallestScale && scale <= LargestScale)
        return scale;
    qWarning("%s: not a scale from 0.25 to 16: %s", scaleVariable, text.constData());
    return 0;
}

/// The toolkit's platform as it will be chosen, as far as it can be known before it is loaded.
QString platformToBe(int argc, char** argv)
{
    QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    for (int i = 1; i + 1 < argc; ++i) {
        if (qstrcmp(argv[i], "-platform") == 0)
            platform = QString::fromLocal8Bit(argv[i + 1]);
    }
    return platform.section(QLatin1Char(':'), 0, 0);
}

/// The largest scale at which the screen fits on the display. Only the toolkit knows the size of a
/// bare display, so it is started and ended once.
double fittingScale(int& argc, char** argv)
{
    int count = argc;
    QGuiApplication probe(count, argv);
    const QSize size = QGuiApplication::primaryScreen()->geometry().size();
    const double fit =
        std::min(double(size.width()) / ZScreen::Width, double(size.height()) / ZScreen::Height);
    return std::clamp(fit, SmallestScale, LargestScale);
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

void ZScreen::setScaleVariable(const char* name)
{
    scaleVariable = name;
}

void ZScreen::setPlace(const QByteArray& place)
{
    wantedPlace() = place;
}

QByteArray ZScreen::placeOnDisplay()
{
    if (!theScreen || !theScreen->window()->isVisible())
        return {};
    const QWidget* frame = theScreen->window();
    const QPoint corner = (QPointF(frame->pos()) * frame->devicePixelRatioF()).toPoint();
    return QByteArray::number(corner.x()) + ',' + QByteArray::number(corner.y());
}

void ZScreen::prepareScale(int& argc, char** argv)
{
    double scale = scaleFromVariable();
    if (scale == 0 && isBareDisplay(platformToBe(argc, argv)))
        scale = fittingScale(argc, argv);
    if (scale == 0)
        return;
    // The display's own density must not come on top.
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    qputenv("QT_SCALE_FACTOR", QByteArray::number(scale));
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

ZScreen::ZScreen(QWidget* frame)
    : QWidget(frame), x11Focus_(std::make_unique<X11Focus>(*frame)), pan_(new ZBoxPan(this))
{
    setObjectName(QStringLiteral("ZScreen"));
    resize(Width, Height);
    setFocusPolicy(Qt::NoFocus);
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
    if (!isActive(receiver))
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
    } else if (window()->isHidden()) {
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

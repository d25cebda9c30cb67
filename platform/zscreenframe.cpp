#include "platform/zscreenframe.h"

#include "platform/narrowwindow.h"
#include "platform/screenscale.h"
#include "platform/x11focus.h"
#include "platform/zaccessiblewidget.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/ztheme.h"

#include <QBackingStore>
#include <QCloseEvent>
#include <QExposeEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <array>
#include <cmath>
#include <optional>

namespace
{

/// Of the smallest scale that can be read.
constexpr QSize SmallestWindow(ZScreen::Width * 3 / 4, ZScreen::Height * 3 / 4);

struct Place {
    QPoint corner;
    QSize size; ///< empty if it is not told
};

/// As it was told; nothing if that is no place.
std::optional<Place>& wantedPlace()
{
    static std::optional<Place> place;
    return place;
}

std::optional<Place> placeFrom(const QByteArray& text)
{
    const QList<QByteArray> parts = text.split(',');
    if (parts.size() != 2 && parts.size() != 4)
        return std::nullopt;
    std::array<int, 4> numbers{};
    for (qsizetype i = 0; i < parts.size(); ++i) {
        bool isNumber = false;
        numbers.at(size_t(i)) = parts.at(i).toInt(&isNumber);
        if (!isNumber)
            return std::nullopt;
    }
    return Place{{numbers[0], numbers[1]}, {numbers[2], numbers[3]}};
}

/// Grown to where a pixel of the screen begins on one of the display, at every quarter step.
QRegion onWholePixels(const QRegion& part)
{
    constexpr int Grid = 4;
    QRegion grown;
    for (const QRect& rect : part) {
        const QPoint corner(rect.left() / Grid * Grid, rect.top() / Grid * Grid);
        const QPoint end(rect.right() / Grid * Grid + Grid - 1,
                         rect.bottom() / Grid * Grid + Grid - 1);
        grown += QRect(corner, end);
    }
    return grown;
}

} // namespace

/// Shows the magnified screen in the place of the one below it.
class ZScreenFrame::Glass : public QWidget
{
public:
    explicit Glass(ZScreenFrame* frame) : QWidget(frame), frame_(frame)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        frame_->paintPicture(painter);
    }

private:
    ZScreenFrame* frame_;
};

ZScreenFrame::ZScreenFrame() : QWidget(nullptr)
{
    setWindowTitle(QGuiApplication::applicationDisplayName());
    setAttribute(Qt::WA_OpaquePaintEvent);
    ScreenScale::setDensity(0);
    const bool isOwn = ScreenScale::followsWindow() || ScreenScale::settledBelowOne() > 0;
    if (isOwn)
        resize(ZScreen::Width, ZScreen::Height);
    else if (!ScreenScale::isBareDisplay())
        setFixedSize(ZScreen::Width, ZScreen::Height);
    if (ScreenScale::isBareDisplay())
        setWindowState(Qt::WindowFullScreen);
    else if (wantedPlace())
        move((QPointF(wantedPlace()->corner) / devicePixelRatioF()).toPoint());
    if (isOwn)
        openFollowing();
}

ZScreenFrame::~ZScreenFrame() = default;

/// The glass is nothing by itself.
class ZScreenFrame::Accessible final : public ZAccessibleWidget
{
public:
    explicit Accessible(ZScreenFrame* frame)
        : ZAccessibleWidget(frame, QAccessible::Window, frame->windowTitle())
    {
    }

    int childCount() const override { return content() != nullptr ? 1 : 0; }
    QAccessibleInterface* child(int index) const override
    {
        return index == 0 ? QAccessible::queryAccessibleInterface(content()) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        return child != nullptr && child->object() == content() ? 0 : -1;
    }

private:
    QWidget* content() const
    {
        const auto* frame = qobject_cast<ZScreenFrame*>(object());
        return frame != nullptr ? frame->content_ : nullptr;
    }
};

QAccessibleInterface* ZScreenFrame::makeAccessible()
{
    return new Accessible(this);
}

void ZScreenFrame::setContent(QWidget* content)
{
    content_ = content;
    arrange();
}

void ZScreenFrame::setPlace(const QByteArray& place)
{
    wantedPlace() = placeFrom(place);
}

QByteArray ZScreenFrame::place() const
{
    if (!isVisible())
        return {};
    const QPoint corner = (QPointF(pos()) * devicePixelRatioF()).toPoint();
    QByteArray place = QByteArray::number(corner.x()) + ',' + QByteArray::number(corner.y());
    if (ScreenScale::followsWindow()) {
        const QSize size = (QSizeF(size_) * devicePixelRatioF()).toSize();
        place += ',' + QByteArray::number(size.width()) + ',' + QByteArray::number(size.height());
    }
    return place;
}

/// Pictures are loaded before the window is shown, for the scale that it will have.
void ZScreenFrame::openFollowing()
{
    create();
    const double density = devicePixelRatioF();
    const QScreen* display = windowHandle()->screen();
    const QSizeF pixels(firstPixels(QSizeF(display->size()) * density));
    QWindow* window = windowHandle();
    if (ScreenScale::followsWindow()) {
        window->setMinimumSize((QSizeF(SmallestWindow) / density).toSize());
    } else if (ScreenScale::hasDesktop()) {
        window->setMinimumSize((pixels / density).toSize());
        window->setMaximumSize((pixels / density).toSize());
    }
    window->installEventFilter(this);
    connect(display, &QScreen::geometryChanged, this, [this] {
        if (isVisible() && fillsDisplay())
            windowHandle()->setGeometry(windowHandle()->screen()->geometry());
    });
    follow((pixels / density).toSize());
}

/// Whether it is told no size by anybody.
bool ZScreenFrame::fillsDisplay() const
{
    return ScreenScale::isBareDisplay() || (ScreenScale::followsWindow() && isX11WithoutManager());
}

QSize ZScreenFrame::firstPixels(const QSizeF& display) const
{
    if (fillsDisplay())
        return display.toSize();
    if (const double scale = ScreenScale::settledBelowOne(); scale > 0)
        return (QSizeF(ZScreen::Width, ZScreen::Height) * scale).toSize();
    if (wantedPlace() && !wantedPlace()->size.isEmpty())
        return wantedPlace()->size.expandedTo(SmallestWindow);
    return ScreenScale::firstWindow(display);
}

/// Before the window comes: the toolkit gives it the size of the widget.
void ZScreenFrame::sizeWindow()
{
    QWindow* window = windowHandle();
    if (fillsDisplay()) {
        window->setGeometry(window->screen()->geometry());
        return;
    }
    const QPoint corner = pos();
    window->resize(size_);
    // With a size a window is told the place of its inside.
    if (testAttribute(Qt::WA_Moved))
        window->setFramePosition(corner);
}

/// Whether the toolkit must not make the widget as large as the window.
bool ZScreenFrame::windowResized()
{
    const QSize size = windowHandle()->size();
    if (size.isEmpty() || !isVisible())
        return true;
    follow(size);
    const QSize needed = size.expandedTo(QSize(ZScreen::Width, ZScreen::Height));
    if (needed == size) {
        narrow_.reset();
        return false;
    }
    if (narrow_ == nullptr) {
        narrow_ = std::make_unique<NarrowWindow>(
            this, [this](QPainter& painter) { paintPicture(painter); });
    }
    // The toolkit leaves out what lies beyond the widget; the whole screen must fit into it, even
    // if less is seen of the window. A widget that is not there is resized without its window.
    setAttribute(Qt::WA_WState_Visible, false);
    resize(needed);
    setAttribute(Qt::WA_WState_Visible, true);
    arrange();
    return true;
}

/// Whether the toolkit must not hear of it: it would hand over what it draws. What it has put off
/// until now it does after a request.
bool ZScreenFrame::windowExposed()
{
    renderWhole();
    if (narrow_ == nullptr || isExposing_)
        return false;
    isExposing_ = true;
    QExposeEvent withoutPart{QRegion()};
    QCoreApplication::sendEvent(windowHandle(), &withoutPart);
    isExposing_ = false;
    QCoreApplication::postEvent(this, new QEvent(QEvent::UpdateRequest));
    narrow_->presentAll();
    return true;
}

void ZScreenFrame::follow(QSize size)
{
    const double density = devicePixelRatioF();
    const QSizeF pixels = QSizeF(size) * density;
    const double settled = ScreenScale::settledBelowOne();
    const double scale = settled > 0 ? settled : ScreenScale::fitting(pixels);
    const bool isOther = !qFuzzyCompare(scale, scale_);
    size_ = size;
    scale_ = scale;
    isMagnified_ = !qFuzzyCompare(scale, density);
    corner_ = {int(pixels.width() - ZScreen::Width * scale) / 2,
               int(pixels.height() - ZScreen::Height * scale) / 2};
    if (isOther || !isMagnified_)
        image_ = QImage();
    arrange();
    if (isOther) {
        ScreenScale::setDensity(scale);
        ZPixmapCache::clear();
        emit scaleChanged();
    }
    update();
}

/// Where the screen lies for the toolkit: if it is magnified, that is not where it is seen.
void ZScreenFrame::arrange()
{
    if (content_ == nullptr)
        return;
    if (isMagnified_) {
        content_->move(0, 0);
        if (glass_ == nullptr)
            glass_ = new Glass(this);
        glass_->setGeometry(rect());
        glass_->show();
        glass_->raise();
        glass_->update();
        return;
    }
    delete glass_;
    glass_ = nullptr;
    content_->move((width() - ZScreen::Width) / 2, (height() - ZScreen::Height) / 2);
}

bool ZScreenFrame::takesOver(const QWidget& widget, const QPaintEvent& event)
{
    if (!isMagnified_ || isRendering_ || content_ == nullptr ||
        (&widget != content_ && !content_->isAncestorOf(&widget)))
        return false;
    dirty_ += event.region().translated(widget.mapTo(content_, QPoint())) & content_->rect();
    if (!isUpdating_)
        QCoreApplication::postEvent(this, new QEvent(QEvent::UpdateRequest));
    return true;
}

bool ZScreenFrame::event(QEvent* event)
{
    if (event->type() != QEvent::UpdateRequest || !isMagnified_ || isUpdating_)
        return QWidget::event(event);
    isUpdating_ = true;
    const bool isNew = renderWhole();
    const auto sync = [this, event] { return QWidget::event(event); };
    const bool isDone = narrow_ != nullptr ? narrow_->withoutHandingOver(sync) : sync();
    if (isNew)
        dirty_ = QRegion();
    if (isNew && narrow_ != nullptr)
        narrow_->presentAll();
    presentDirty();
    isUpdating_ = false;
    return isDone;
}

bool ZScreenFrame::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != windowHandle())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Show:
        sizeWindow();
        return false;
    case QEvent::Resize:
        return windowResized();
    case QEvent::Expose:
        return windowExposed();
    default:
        return isMagnified_ && !isMapping_ && mapPointer(event);
    }
}

bool ZScreenFrame::mapPointer(QEvent* event)
{
    isMapping_ = true;
    bool isMapped = true;
    const auto send = [this, event](QEvent& mapped) {
        QCoreApplication::sendEvent(windowHandle(), &mapped);
        event->setAccepted(mapped.isAccepted());
    };
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const QPointF point = toScreen(mouse->position());
        QMouseEvent mapped(mouse->type(), point, point, mapToGlobal(point), mouse->button(),
                           mouse->buttons(), mouse->modifiers(), mouse->pointingDevice());
        mapped.setTimestamp(mouse->timestamp());
        send(mapped);
        break;
    }
    case QEvent::Wheel: {
        const auto* wheel = static_cast<QWheelEvent*>(event);
        const QPointF point = toScreen(wheel->position());
        QWheelEvent mapped(point, mapToGlobal(point), wheel->pixelDelta(), wheel->angleDelta(),
                           wheel->buttons(), wheel->modifiers(), wheel->phase(), wheel->inverted(),
                           wheel->source(), wheel->pointingDevice());
        mapped.setTimestamp(wheel->timestamp());
        send(mapped);
        break;
    }
    case QEvent::Enter: {
        const QPointF point = toScreen(static_cast<QEnterEvent*>(event)->position());
        QEnterEvent mapped(point, point, mapToGlobal(point));
        send(mapped);
        break;
    }
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
        // A touch that nobody takes comes again as one of the mouse.
        event->ignore();
        break;
    default:
        isMapped = false;
    }
    isMapping_ = false;
    return isMapped;
}

QPointF ZScreenFrame::toScreen(QPointF point) const
{
    return (point * devicePixelRatioF() - QPointF(corner_)) / scale_;
}

QRect ZScreenFrame::seenAt(const QWidget& widget, const QRect& part) const
{
    const double density = devicePixelRatioF();
    const QPointF window = QPointF(mapToGlobal(QPoint())) * density;
    if (!isMagnified_ || content_ == nullptr) {
        const QPointF corner(widget.mapTo(this, part.topLeft()));
        return QRectF(window + corner * density, QSizeF(part.size()) * density).toRect();
    }
    if (&widget == this)
        return QRectF(window, QSizeF(windowHandle()->size()) * density).toRect();
    const QPointF corner = QPointF(widget.mapTo(content_, part.topLeft())) * scale_ + corner_;
    return QRectF(window + corner, QSizeF(part.size()) * scale_).toRect();
}

QPoint ZScreenFrame::pointSeenAt(const QWidget& widget, QPoint point) const
{
    const double density = devicePixelRatioF();
    // In its middle: pixels of the toolkit need not begin where one of the display does.
    const QPointF inWindow =
        (QPointF(point) + QPointF(0.5, 0.5)) / density - QPointF(mapToGlobal(QPoint()));
    const bool isElsewhere = isMagnified_ && content_ != nullptr;
    const QPointF inside = isElsewhere ? toScreen(inWindow) : inWindow;
    // The frame's own pixels are those of a magnified screen, which lies in its corner.
    return widget.mapFrom(&widget == this ? &widget : this,
                          QPoint(int(std::floor(inside.x())), int(std::floor(inside.y()))));
}

/// If that is needed, which it returns. The glass shows it next time.
bool ZScreenFrame::renderWhole()
{
    if (!isMagnified_ || !image_.isNull() || content_ == nullptr || isRendering_)
        return false;
    image_ =
        QImage((QSizeF(ZScreen::Width, ZScreen::Height) * scale_).toSize(), QImage::Format_RGB32);
    dirty_ = QRegion();
    render(content_->rect());
    glass_->update();
    return true;
}

void ZScreenFrame::render(const QRegion& part)
{
    isRendering_ = true;
    QPainter painter(&image_);
    painter.scale(scale_, scale_);
    for (const QRect& rect : part)
        painter.fillRect(rect, ZTheme::current().bar);
    content_->render(&painter, part.boundingRect().topLeft(), part, DrawChildren);
    isRendering_ = false;
}

/// At once, and not by a paint event, in which the toolkit would paint what is below once more.
void ZScreenFrame::presentDirty()
{
    if (dirty_.isEmpty() || image_.isNull())
        return;
    const QRegion part = onWholePixels(std::exchange(dirty_, QRegion())) & content_->rect();
    render(part);
    const double density = devicePixelRatioF();
    QRegion seen;
    for (const QRect& rect : part) {
        const QRectF pixels(QPointF(rect.topLeft()) * scale_ + corner_,
                            QSizeF(rect.size()) * scale_);
        seen += QRectF(pixels.topLeft() / density, pixels.size() / density).toAlignedRect();
    }
    seen &= QRect(QPoint(), windowHandle()->size());
    if (narrow_ != nullptr) {
        narrow_->present(seen);
        return;
    }
    QBackingStore* store = backingStore();
    if (store == nullptr || store->size() != size() || !windowHandle()->isExposed()) {
        glass_->update();
        return;
    }
    store->beginPaint(seen);
    QPainter painter(store->paintDevice());
    painter.setClipRegion(seen);
    paintPicture(painter);
    painter.end();
    store->endPaint();
    store->flush(seen, windowHandle());
}

void ZScreenFrame::paintPicture(QPainter& painter) const
{
    const double density = devicePixelRatioF();
    const QRectF target(QPointF(corner_) / density, QSizeF(image_.size()) / density);
    if (image_.isNull() || QRectF(QPointF(), QSizeF(size_)) != target)
        painter.fillRect(rect(), ZTheme::current().bar);
    if (!image_.isNull())
        painter.drawImage(target, image_);
}

void ZScreenFrame::paintEvent(QPaintEvent* /*event*/)
{
    if (!isMagnified_)
        QPainter(this).fillRect(rect(), ZTheme::current().bar);
}

void ZScreenFrame::resizeEvent(QResizeEvent* /*event*/)
{
    arrange();
}

void ZScreenFrame::closeEvent(QCloseEvent* event)
{
    event->ignore();
    emit closeRequested();
}

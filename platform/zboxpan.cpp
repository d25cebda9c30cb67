#include "platform/zboxpan.h"

#include "platform/keymap.h"
#include "platform/scrollthumb.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>

/// The thumb of a scroll bar as high as the screen.
class ZBoxPan::Mark : public QWidget
{
public:
    static constexpr int Edge = 1; ///< sets it off from whatever it lies over

    explicit Mark(QWidget* screen) : QWidget(screen)
    {
        hide();
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_OpaquePaintEvent);
        setObjectName(QStringLiteral("ZBoxPan"));
    }

    void showBeside(QWidget& box)
    {
        constexpr int Gap = 1;
        const int track = parentWidget()->height();
        const ScrollThumb thumb = ScrollThumb::of(track, track, box.height(), -box.y());
        setGeometry(box.geometry().right() + 1 + Gap, thumb.top,
                    ZSkinService::ScrollThumbWidth + 2 * Edge, thumb.length);
        if (isVisible())
            return;
        liftOver(box);
        show();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const ZTheme& theme = ZTheme::current();
        QPainter painter(this);
        painter.fillRect(rect(), theme.ground);
        painter.fillRect(rect().adjusted(Edge, Edge, -Edge, -Edge), theme.thumb);
    }

private:
    /// Puts it right over a box, below whatever lies over that.
    void liftOver(QWidget& box)
    {
        raise();
        const QObjectList& all = parentWidget()->children();
        auto above = all.begin() + all.indexOf(&box) + 1;
        while (!(*above)->isWidgetType())
            ++above;
        if (*above != this)
            stackUnder(static_cast<QWidget*>(*above));
    }
};

ZBoxPan::ZBoxPan(QWidget* screen) : QObject(screen), screen_(screen) {}

void ZBoxPan::watch(QWidget* box)
{
    box->installEventFilter(this);
    connect(box, &QObject::destroyed, this, [this](const QObject* gone) { leave(gone); });
}

bool ZBoxPan::isHigh(const QWidget* box) const
{
    return box->height() > screen_->height();
}

bool ZBoxPan::eventFilter(QObject* watched, QEvent* event)
{
    auto* box = static_cast<QWidget*>(watched);
    switch (event->type()) {
    case QEvent::Show:
        tops_.remove(box);
        fit(box);
        return false;
    case QEvent::Move:
    case QEvent::Resize:
        if (box->isVisible())
            fit(box);
        return false;
    case QEvent::Hide:
        leave(box);
        return false;
    case QEvent::KeyPress:
        return isHigh(box) && takeKey(box, *event);
    default:
        return isHigh(box) && takeFinger(box, *event);
    }
}

/// Puts a box where it is to be after it has placed itself.
void ZBoxPan::fit(QWidget* box)
{
    if (isHigh(box))
        panTo(box, tops_.value(box, 0));
    else
        leave(box);
}

void ZBoxPan::leave(const QObject* box)
{
    tops_.remove(box);
    Mark* mark = marks_.take(box);
    if (mark == nullptr)
        return;
    // Perhaps the screen is just going through its children.
    mark->hide();
    mark->deleteLater();
}

void ZBoxPan::panTo(QWidget* box, int top)
{
    const int shown = std::clamp(top, screen_->height() - box->height(), 0);
    tops_.insert(box, shown);
    // Moving it comes by here again.
    if (box->y() != shown)
        box->move(box->x(), shown);
    Mark*& mark = marks_[box];
    if (mark == nullptr)
        mark = new Mark(screen_);
    mark->showBeside(*box);
}

bool ZBoxPan::takeKey(QWidget* box, const QEvent& event)
{
    const int code = PhoneKey::code(static_cast<const QKeyEvent&>(event));
    if (code != PhoneKey::Up && code != PhoneKey::Down)
        return false;
    panTo(box, box->y() + (code == PhoneKey::Up ? Step : -Step));
    return true;
}

/// Heights are told in pixels of the screen: those of the box move with it.
bool ZBoxPan::takeFinger(QWidget* box, const QEvent& event)
{
    const auto heightOf = [box](const QMouseEvent& mouse) {
        return box->mapToParent(mouse.position().toPoint()).y();
    };
    switch (event.type()) {
    case QEvent::MouseButtonPress:
        finger_.press(heightOf(static_cast<const QMouseEvent&>(event)), -box->y());
        return false;
    case QEvent::MouseMove:
        if (const auto top = finger_.move(heightOf(static_cast<const QMouseEvent&>(event)), 1)) {
            panTo(box, -*top);
            return true;
        }
        return false;
    case QEvent::MouseButtonRelease:
        // What was a drag is no answer.
        return !finger_.release();
    case QEvent::Wheel:
        panTo(box,
              box->y() +
                  (static_cast<const QWheelEvent&>(event).angleDelta().y() > 0 ? Step : -Step));
        return true;
    default:
        return false;
    }
}

#include "widgets/kwidget.h"

#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/screenscale.h"
#include "platform/zapplication.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "widgets/boxparts.h"

#include <QMouseEvent>
#include <QPainter>

kWidget* textView = nullptr;
kWidget* processView = nullptr;

namespace
{

constexpr int BoxCacheKilobytes = 4096;
constexpr int FrameMilliseconds = 80;
constexpr int FrameCount = 8;
constexpr int ShowDelayMilliseconds = 10;
constexpr int PaintDelayMilliseconds = 1;

QTimer* makeTimer(QObject* parent, bool once, int milliseconds)
{
    auto* timer = new QTimer(parent);
    timer->setSingleShot(once);
    timer->setInterval(milliseconds);
    return timer;
}

} // namespace

kWidget::kWidget()
    : QWidget(ZScreen::instance()),
      aniTimer(makeTimer(this, false, FrameMilliseconds)),
      showTimer_(makeTimer(this, true, ShowDelayMilliseconds)),
      paintTimer_(makeTimer(this, true, PaintDelayMilliseconds)),
      titleFont_(Box::titleFont()),
      textFont_(Box::textFont())
{
    hide();
    setObjectName(QStringLiteral("kWidget"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
    ZPixmapCache::setCacheLimit(BoxCacheKilobytes);
    connect(aniTimer, &QTimer::timeout, this, &kWidget::aniUpdate);
    connect(showTimer_, &QTimer::timeout, this, &QWidget::show);
    connect(paintTimer_, &QTimer::timeout, this, &kWidget::paint);
    connect(ZScreen::instance(), &ZScreen::densityChanged, this, [this] {
        stale_ = true;
        if (visible)
            paint();
    });
    kWidget::init();
}

int kWidget::showText(const QString& title, const QString& text, int align, const QString& icon,
                      int mode)
{
    setContent({title, icon, text, align, false, QString(), 0, mode == Question ? YesNo : NoKeys});
    return Show(mode);
}

int kWidget::showProcess(const QString& title, const QString& above, int alignAbove,
                         const QString& below, int alignBelow, const QString& icon, int mode)
{
    setContent(
        {title, icon, above, alignAbove, true, below, alignBelow, mode != Plain ? Cancel : NoKeys});
    aniFrame = QPixmap();
    loadPixmap(aniFrame, framePath(0));
    frameNo = 1;
    aniTimer->start();
    return Show(mode);
}

void kWidget::setContent(const Content& next)
{
    const bool isOfOtherParts = next.process != content_.process || next.keyBar != content_.keyBar;
    content_ = next;
    stale_ = true;
    if (isOfOtherParts)
        ZAccessible::tellParts(this);
    // One that is about to be shown is told then.
    if (isVisible())
        ZAccessible::tellContent(this);
}

QRegion kWidget::compose()
{
    if (!stale_)
        return QRect(0, 0, Box::Width, y);
    stale_ = false;
    QRegion changed = redrawLines();
    if (changed.isEmpty()) {
        drawAll();
        changed = QRect(0, 0, Box::Width, y);
    }
    composed_ = content_;
    return changed;
}

int kWidget::Show(int mode)
{
    result = mode != Plain;
    closed = false;
    waiting = mode == Question;
    visible = true;
    repaint();
    // Work that shows one text after the other must not put off the first for ever.
    if (isHidden() && !showTimer_->isActive())
        showTimer_->start();
    ZApplication::processEventsButInput();
    if (!waiting)
        return result ? 1 : 0;
    if (!ZApplication::waitUntil([this] { return !waiting; }))
        close(0);
    return result ? 1 : 0;
}

void kWidget::stop(int ticks)
{
    // Of a box that is closed already the next one must not inherit the end.
    if (visible)
        countdown = ticks;
}

void kWidget::init()
{
    ZApplication::processEventsButInput();
    visible = false;
    countdown = 0;
    showTimer_->stop();
    paintTimer_->stop();
    hide();
    aniTimer->stop();
    aniFrame = QPixmap();
    constexpr int ClearedTop = 20;
    setGeometry(Box::Left, ClearedTop, Box::Width, ZScreen::Height);
    content_ = Content();
    composed_ = Content();
    sections_.clear();
    titleIcon_ = QPixmap();
    titleBottom_ = 0;
    stale_ = true;
    y = 0;
    ZApplication::processEventsButInput();
}

void kWidget::repaint()
{
    if (!paintTimer_->isActive())
        paintTimer_->start();
}

void kWidget::paint()
{
    const QRegion changed = compose();
    setGeometry(Box::geometry(y));
    update(changed);
}

void kWidget::paintNow()
{
    if (!visible)
        return;
    paintTimer_->stop();
    QRegion changed = compose();
    setGeometry(Box::geometry(y));
    if (isHidden()) {
        showTimer_->stop();
        show();
        ZApplication::processEventsButInput();
        changed = rect();
    }
    QWidget::repaint(changed);
}

void kWidget::aniUpdate()
{
    const QString path = framePath(frameNo);
    QPixmap frame;
    if (!ZPixmapCache::find(path, frame)) {
        loadPixmap(frame, path);
        ZPixmapCache::insert(path, frame);
    }
    update(frameRect());
    aniFrame = frame;
    update(frameRect());
    frameNo = (frameNo + 1) % FrameCount;
    if (countdown > 0 && --countdown == 0)
        kWidget::init();
}

QRect kWidget::frameRect() const
{
    const QSize size = pixmapSize(aniFrame);
    return {QPoint((Box::Width - size.width()) / 2, aniY), size};
}

void kWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    ZAccessible::tellAlert(this);
}

void kWidget::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, ScreenScale::density() < 1);
    painter.drawPixmap(0, 0, canvas);
    if (composed_.process)
        drawPicture(painter, frameRect().topLeft(), aniFrame);
}

void kWidget::close(int answer)
{
    if (waiting)
        result = answer != 0;
    closed = true;
    waiting = false;
    // A box closes itself; that is nothing which a command asked for.
    kWidget::init();
}

void kWidget::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    // A key that is still held from before the box came up must not answer or dismiss it.
    if (!result || event->isAutoRepeat())
        return;
    const int code = PhoneKey::code(*event);
    const bool isPhoneKey = code != 0;
    if (!isPhoneKey || PhoneKey::isArrow(code))
        return;
    if (code == PhoneKey::SoftRight)
        close(0);
    else if (code == PhoneKey::SoftLeft || !waiting)
        close(1);
}

void kWidget::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    const QPoint point = event->position().toPoint();
    if (!result || !rect().contains(point))
        return;
    const bool onBar = composed_.keyBar != NoKeys && point.y() >= height() - 2 * Box::KeyBarHeight;
    if (!waiting && (onBar || composed_.keyBar == NoKeys))
        close(1);
    else if (waiting && onBar)
        close(point.x() < width() / 2 ? 1 : 0);
}

QStringList kWidget::answersOf(int keyBar)
{
    if (keyBar == NoKeys)
        return {};
    return keyBar == YesNo ? QStringList{LANG_YES, LANG_NO} : QStringList{LANG_CANCEL};
}

ZBoxWords kWidget::boxWords() const
{
    ZBoxWords words{content_.title, {}, answersOf(content_.keyBar), content_.process, false};
    for (const QString& text : {content_.text, content_.below}) {
        QString spoken = text;
        spoken.replace(QLatin1String("<hr>"), QLatin1String("\n"));
        if (!spoken.isEmpty())
            words.texts.append(spoken);
    }
    words.closes = result && words.answers.isEmpty();
    return words;
}

void kWidget::chooseAnswer(int answer)
{
    if (result)
        close(answer == 0 ? 1 : 0);
}

void kWidget::focusInEvent(QFocusEvent* /*event*/)
{
    repaint();
}

void kWidget::focusOutEvent(QFocusEvent* /*event*/)
{
    if (visible)
        repaint();
}

#include "platform/zlift.h"

#include "platform/zskinservice.h"
#include "platform/ztheme.h"

#include <QEvent>
#include <QPainter>

ZLift::ZLift(QWidget* lifted, const QColor& ground, const QColor& outline)
    : QWidget(lifted->parentWidget()), lifted_(lifted), ground_(ground), outline_(outline)
{
    hide();
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    lifted->installEventFilter(this);
    connect(lifted, &QObject::destroyed, this, [this] {
        // Until it goes it may be asked to paint.
        hide();
        deleteLater();
    });
}

bool ZLift::eventFilter(QObject* /*watched*/, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Show:
        follow();
        show();
        stackUnder(lifted_);
        break;
    case QEvent::Hide:
        hide();
        break;
    case QEvent::Move:
    case QEvent::Resize:
        follow();
        break;
    case QEvent::ZOrderChange:
        stackUnder(lifted_);
        break;
    default:
        break;
    }
    return false;
}

void ZLift::follow()
{
    const QRect body = lifted_->rect();
    QRegion shown(body);
    const QRect corner(0, 0, Corner, Corner);
    for (const QPoint& place : {body.topLeft(), QPoint(body.right() + 1 - Corner, body.top()),
                                QPoint(body.left(), body.bottom() + 1 - Corner),
                                QPoint(body.right() + 1 - Corner, body.bottom() + 1 - Corner)})
        shown -= corner.translated(place);
    if (lifted_->mask() != shown)
        lifted_->setMask(shown);
    // On the soft-key bar nothing would be seen of it.
    const QRect aboveBar = parentWidget()->rect().adjusted(0, 0, 0, -ZSkinService::SoftKeyHeight);
    const QRect place = lifted_->geometry();
    const QRect around = place.adjusted(-Shadow, -Shadow, Shadow, Shadow);
    setGeometry(aboveBar.contains(place) ? around.intersected(aboveBar) : around);
}

void ZLift::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ZTheme::current().shadow);
    const QRect place = lifted_->geometry().translated(-pos());
    for (int width = Shadow; width > 0; --width) {
        const QRect ring = place.adjusted(-width, -width, width, width);
        painter.drawRoundedRect(ring, Corner + width, Corner + width);
    }
    painter.setPen(outline_);
    painter.setBrush(ground_);
    painter.drawRoundedRect(QRectF(place).adjusted(0.5, 0.5, -0.5, -0.5), Corner, Corner);
}

#include "widgets/boxframe.h"

#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "widgets/boxparts.h"

#include <QMouseEvent>
#include <QPainter>

BoxFrame::BoxFrame(const QString& title)
    : QWidget(ZScreen::instance()),
      titleFont_(Box::titleFont()),
      textFont_(Box::textFont()),
      title_(Box::linesOf(title, titleFont_))
{
    hide();
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
}

void BoxFrame::setText(const QString& text)
{
    lines_ = Box::linesOf(text, textFont_);
}

int BoxFrame::titleEnd() const
{
    return pixmapSize(icon_).height() + Box::blockHeight(title_, titleFont_);
}

int BoxFrame::textEnd() const
{
    return titleEnd() + Box::blockHeight(lines_, textFont_);
}

void BoxFrame::fit(int roomBelow)
{
    setGeometry(Box::geometry(textEnd() + roomBelow));
    update();
}

void BoxFrame::drawUpToText(QPainter& painter) const
{
    painter.fillRect(rect(), Qt::black);
    const QSize icon = pixmapSize(icon_);
    if (!icon_.isNull())
        drawPicture(painter, {(Box::Width - icon.width()) / 2, Box::Gap}, icon_);
    painter.setPen(Qt::white);
    Box::drawLines(painter, titleFont_, title_, icon.height() + Box::Gap, Qt::AlignHCenter);
    Box::drawGround(painter, titleEnd(), textEnd() - titleEnd());
    Box::drawLines(painter, textFont_, lines_, titleEnd() + Box::Gap, Qt::AlignHCenter);
}

bool BoxFrame::isAtKeyBar(const QMouseEvent& event) const
{
    const QPoint point = event.position().toPoint();
    return rect().contains(point) && point.y() >= height() - 2 * Box::KeyBarHeight;
}

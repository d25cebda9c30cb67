#include "tests/support/pictures.h"

#include <QBuffer>
#include <QColor>

#include <cstdlib>
#include <functional>

namespace
{

constexpr int VisibleDifference = 48;

bool differs(QRgb pixel, QRgb ground)
{
    return std::abs(qRed(pixel) - qRed(ground)) > VisibleDifference ||
           std::abs(qGreen(pixel) - qGreen(ground)) > VisibleDifference ||
           std::abs(qBlue(pixel) - qBlue(ground)) > VisibleDifference;
}

QRect boundsWhere(const QImage& picture, const QRect& area, const std::function<bool(QRgb)>& counts)
{
    QRect bounds;
    const QRect inside = area.intersected(picture.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            if (counts(picture.pixel(x, y)))
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds;
}

} // namespace

QRect inkBounds(const QImage& picture, const QRect& area, const QColor& ground)
{
    return boundsWhere(picture, area,
                       [rgb = ground.rgb()](QRgb pixel) { return differs(pixel, rgb); });
}

bool isPlain(const QImage& picture, const QRect& area, const QColor& colour)
{
    return picture.rect().contains(area) &&
           boundsWhere(picture, area, [rgb = colour.rgb()](QRgb pixel) {
               return pixel != rgb;
           }).isEmpty();
}

QRect boundsOf(const QImage& picture, const QColor& colour)
{
    return boundsWhere(picture, picture.rect(),
                       [rgb = colour.rgb()](QRgb pixel) { return pixel == rgb; });
}

QPixmap coloured(const QColor& colour, QSize size)
{
    QPixmap pixmap(size);
    pixmap.fill(colour);
    return pixmap;
}

QByteArray plainPng(int width, int height, const QColor& colour)
{
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return bytes;
}

bool isNear(const QRect& one, const QRect& other, int slack)
{
    return std::abs(one.left() - other.left()) <= slack &&
           std::abs(one.right() - other.right()) <= slack &&
           std::abs(one.top() - other.top()) <= slack &&
           std::abs(one.bottom() - other.bottom()) <= slack;
}

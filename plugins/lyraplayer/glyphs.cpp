#include "plugins/lyraplayer/glyphs.h"

#include <QPainter>
#include <QPainterPath>

#include <initializer_list>

namespace
{

/// Fills shapes whose points are given in hundredths of the square.
class Shapes
{
public:
    Shapes(QPainter& painter, const QRectF& square, const QColor& colour)
        : painter_(painter), square_(square)
    {
        painter_.save();
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(colour);
    }
    ~Shapes() { painter_.restore(); }
    Shapes(const Shapes&) = delete;
    Shapes& operator=(const Shapes&) = delete;

    QPointF point(double x, double y) const
    {
        return {square_.left() + square_.width() * x / 100,
                square_.top() + square_.height() * y / 100};
    }
    QRectF box(double x, double y, double width, double height) const
    {
        return {point(x, y), point(x + width, y + height)};
    }
    void polygon(std::initializer_list<QPointF> points) const
    {
        QPolygonF polygon;
        for (const QPointF& each : points)
            polygon << point(each.x(), each.y());
        painter_.drawPolygon(polygon);
    }
    void rectangle(double x, double y, double width, double height) const
    {
        painter_.drawRect(box(x, y, width, height));
    }
    void ellipse(double x, double y, double width, double height) const
    {
        painter_.drawEllipse(box(x, y, width, height));
    }

private:
    QPainter& painter_;
    QRectF square_;
};

} // namespace

void Glyph::play(QPainter& painter, const QRectF& square, const QColor& colour)
{
    Shapes(painter, square, colour).polygon({{20, 8}, {90, 50}, {20, 92}});
}

void Glyph::pause(QPainter& painter, const QRectF& square, const QColor& colour)
{
    const Shapes shapes(painter, square, colour);
    shapes.rectangle(18, 12, 22, 76);
    shapes.rectangle(60, 12, 22, 76);
}

void Glyph::previous(QPainter& painter, const QRectF& square, const QColor& colour)
{
    const Shapes shapes(painter, square, colour);
    shapes.rectangle(10, 16, 12, 68);
    shapes.polygon({{88, 16}, {26, 50}, {88, 84}});
}

void Glyph::next(QPainter& painter, const QRectF& square, const QColor& colour)
{
    const Shapes shapes(painter, square, colour);
    shapes.rectangle(78, 16, 12, 68);
    shapes.polygon({{12, 16}, {74, 50}, {12, 84}});
}

void Glyph::speaker(QPainter& painter, const QRectF& square, const QColor& colour)
{
    const Shapes shapes(painter, square, colour);
    shapes.polygon({{4, 34}, {26, 34}, {54, 10}, {54, 90}, {26, 66}, {4, 66}});
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, square.width() / 10));
    constexpr int Eighth = 45 * 16; // the arc's unit is a sixteenth of a degree
    painter.drawArc(shapes.box(46, 28, 44, 44), -Eighth, 2 * Eighth);
}

void Glyph::note(QPainter& painter, const QRectF& square, const QColor& colour)
{
    const Shapes shapes(painter, square, colour);
    shapes.ellipse(12, 68, 30, 22);
    shapes.ellipse(58, 58, 30, 22);
    shapes.rectangle(36, 20, 6, 60);
    shapes.rectangle(82, 10, 6, 60);
    shapes.polygon({{36, 20}, {88, 10}, {88, 26}, {36, 36}});
}

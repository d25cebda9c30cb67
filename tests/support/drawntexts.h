#pragma once

#include <QList>
#include <QRectF>
#include <QSize>
#include <QString>

#include <functional>

class QPainter;
class QWidget;

/// A text as a widget draws it, with its place in the widget's pixels: from the top of the highest
/// letter that its font may have to the lowest, as wide as it advances.
struct DrawnText {
    QString text;
    QRectF area;
};

/// The texts that a widget and those in it draw, in their order. What is drawn as glyphs or
/// pictures, as boxes do, is not among them.
QList<DrawnText> textsDrawnBy(QWidget& widget);

/// The same of what is drawn on a device of that size.
QList<DrawnText> textsDrawnOn(QSize size, const std::function<void(QPainter&)>& draw);

/// Whether one of them is this text, neither cut nor with an ellipsis in place of a part.
bool isDrawn(const QList<DrawnText>& drawn, const QString& text);

/// Two of them of which one is drawn over the other, or one that reaches out of `frame`; empty if
/// all have a place of their own.
QString misplaced(const QList<DrawnText>& drawn, const QRectF& frame);

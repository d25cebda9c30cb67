#pragma once

#include <QList>
#include <QSize>

class QPainter;
class QPoint;

/// A picture of the phone's keys, so that one sees which is meant.
namespace KeypadPicture
{

/// Pixels of the screen.
inline constexpr QSize Size(176, 149);

/// Draws it with its corner at a point: the key of the code `wanted` stands out, those of `given`
/// are filled.
void paint(QPainter& painter, QPoint corner, int wanted, const QList<int>& given);

} // namespace KeypadPicture

#pragma once

#include <QString>

class QPainter;
class QRect;

/// Writes a message into the middle of an area, in lines as long as fit; what finds no room is cut
/// off at its end.
void paintNotice(QPainter& painter, const QRect& area, const QString& text);

#pragma once

#include <QtGlobal>

class QColor;
class QPainter;
class QPoint;

/// The thumb of a scroll bar: where it is on its track, and how it is drawn. Pixels.
struct ScrollThumb {
    int top = 0; ///< from the beginning of the track
    int length = 0;

    /// For a track of that length, while `shown` of `all` are in view from `first` on, in any unit;
    /// `all` must be more than is shown. It is long enough to be seen, and at an end of the track
    /// when that end is in view.
    static ScrollThumb of(int track, qint64 shown, qint64 all, qint64 first);

    /// Draws it on a track that begins at a point, ZSkinService::ScrollThumbWidth wide.
    void paint(QPainter& painter, QPoint track, const QColor& colour) const;
};

#pragma once

#include "platform/zskinservice.h"

#include <QFont>
#include <QRect>

class QPainter;
class ZListBoxItem;

/// Draws one row of a ZListBox.
class ZListRowPainter
{
public:
    struct State {
        bool highlighted = false;
        int iconWidth = 0; ///< room for the icon in pixels
        QFont font;
        const ZSkinService::Look* look = nullptr;
        /// How far the name, which then is not cut, has glided from its beginning to its end, in
        /// pixels; negative: it is cut in its middle if it does not fit.
        qreal glide = -1;
    };

    static void paint(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                      const State& state);
    /// Where the name of a row is drawn and how wide it is: of one that does not fit the second is
    /// wider than the first.
    static QRect nameRect(const QRect& area, const ZListBoxItem& item, const State& state);
    static int nameWidth(const ZListBoxItem& item, const State& state);
    /// The height of rows with this font, so many lines of text (1 or 2) and icons so high.
    static int rowHeight(const QFont& font, int lines, int iconHeight);
    /// A name as it is shown: withMarks(), and control characters have pictures of their own, so
    /// that a line break neither breaks the row nor hides.
    static QString visibleText(const QString& text);

private:
    static QRect textRect(const QRect& area, const ZListBoxItem& item, const State& state);
    static void paintIcon(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                          const State& state);
    static void paintTexts(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                           const State& state);
    static void paintDetail(QPainter& painter, const QRect& area, int baseline,
                            const QString& text);
    static void paintCheckBox(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                              const State& state);
};

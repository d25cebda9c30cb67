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
    };

    static void paint(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                      const State& state);
    /// A name as it is shown: withMarks(), and control characters have pictures of their own, so
    /// that a line break neither breaks the row nor hides.
    static QString visibleText(const QString& text);

private:
    static void paintTexts(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                           const State& state);
    static void paintDetail(QPainter& painter, const QRect& area, const QString& text);
    static void paintCheckBox(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                              const State& state);
};

#pragma once

#include <QColor>
#include <QFont>

/// The one place for colours, metrics and the look of each class of widget.
/// All lengths are pixels of the 240 x 320 screen.
class ZSkinService
{
public:
    /// Widget classes by the numbers that programs pass to constructors.
    enum WidgetClsID : unsigned {
        clsListBox = 40,
        clsMainWidget = 50,
        clsNavTab = 52,
        clsSoftKey = 53,
        clsOptionsMenu = 54,
    };

    struct Look {
        QColor background;
        QColor text;
        QColor disabledText;
        QColor highlight;
        QColor highlightText;
        QColor secondaryText;
        QColor border;
    };

    /// The look of a class; an unknown number gets that of a list box.
    static const Look& look(unsigned cls);

    static constexpr int HeaderHeight = 20;
    static constexpr int TabBarHeight = 22;
    static constexpr int SoftKeyHeight = 20;
    static constexpr int MenuRowHeight = 24;
    static constexpr int MenuTabWidth = 9;
    static constexpr int ScrollBarWidth = 4;
    static constexpr int RowMargin = 4;
    static constexpr int CheckBoxSize = 14;
    /// How far a pressed finger may move and still count as a tap.
    static constexpr int TapSlop = 8;

    /// A font by the phone's measures: a point is a pixel, weights run from 0 to 99
    /// (25 light, 50 normal, 75 bold, 87 black). Light ones are drawn as normal.
    static QFont font(const QString& family, int points, int weight = 50, bool italic = false);
    /// The toolkit's weight (1 to 1000) for one from 0 to 99; values outside are clamped.
    static int toolkitWeight(int weight);
};

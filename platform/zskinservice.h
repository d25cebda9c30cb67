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
        clsDarkListBox = 41, ///< dark in every theme; the phone had none
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
        QColor mark;     ///< where one is; how much is done
        QColor hairline; ///< between what lies beside each other
        QColor thumb;    ///< of a scroll bar
    };

    /// The look of a class in the theme that is in use; an unknown number gets that of a list box.
    /// It stays as it is when another theme is chosen.
    static const Look& look(unsigned cls);

    static constexpr int HeaderHeight = 20;
    static constexpr int TabBarHeight = 22;
    static constexpr int SoftKeyHeight = 20;
    static constexpr int MenuRowHeight = 24;
    static constexpr int MenuTabWidth = 9;
    /// What is kept free for a scroll bar, how much of that its thumb takes, and the least that the
    /// thumb is long.
    static constexpr int ScrollBarWidth = 4;
    static constexpr int ScrollThumbWidth = 3;
    static constexpr int ScrollThumbLength = 16;
    /// The bar at the left of what is highlighted.
    static constexpr int MarkWidth = 4;
    static constexpr int CheckBoxSize = 14;
    /// How far a pressed finger may move and still count as a tap.
    static constexpr int TapSlop = 8;

    /// A font by the phone's measures: a point is a pixel, weights run from 0 to 99
    /// (25 light, 50 normal, 75 bold, 87 black). Light ones are drawn as normal.
    static QFont font(const QString& family, int points, int weight = 50, bool italic = false);
    /// The toolkit's weight (1 to 1000) for one from 0 to 99; values outside are clamped.
    static int toolkitWeight(int weight);
};

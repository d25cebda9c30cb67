#pragma once

#include <QColor>

/// The colours of everything that is drawn on the screen, chosen once before the first widget.
///
/// There is one accent. It marks where one is and what is done of something; it is never what one
/// reads.
struct ZTheme {
    enum Kind { Light, Dark };

    QColor ground; ///< of lists, menus, fields and pages
    QColor text;
    QColor secondText; ///< what is said beside the text: a size, a date, a digit; what is disabled
    QColor hairline;   ///< between rows
    QColor highlight;  ///< the ground of the current row
    QColor highlightText;
    QColor mark;          ///< the bar at the current row; the part that is done
    QColor frame;         ///< around a page that lies over others
    QColor outline;       ///< of menus, fields and check boxes
    QColor thumb;         ///< of a scroll bar
    QColor selection;     ///< the ground of selected text
    QColor selectionText; ///< and the text on it
    QColor shadow;        ///< under what lies over something else; see-through

    QColor bar; ///< the ground of the header and of the soft-key bar
    QColor barText;
    QColor barSecondText;
    QColor barMark;    ///< what `mark` is on a bar
    QColor barTrack;   ///< what is not done yet, beside barMark
    QColor tabMark;    ///< of the tab whose page is shown, between a bar and the ground
    QColor barWarning; ///< with a sign, too

    QColor warning; ///< these two only together with a sign
    QColor done;

    static const ZTheme& of(Kind kind);
    /// The one in use: light until another one is chosen.
    static const ZTheme& current();
    /// Widgets that are there already stay as they are.
    static void choose(Kind kind);
};

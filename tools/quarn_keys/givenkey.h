#pragma once

#include <QKeyEvent>
#include <QString>

/// A key as a keyboard sends it.
struct GivenKey {
    int key = 0;        ///< the toolkit's number; 0 or Qt::Key_unknown if it knows none
    quint32 scan = 0;   ///< the keyboard's own number; 0 if it is not told
    quint32 symbol = 0; ///< the display's number

    static GivenKey of(const QKeyEvent& event);

    friend bool operator==(const GivenKey&, const GivenKey&) = default;

    /// Whether a line in a file can name it.
    bool hasName() const { return isKnown() || scan != 0; }
    /// Whether the toolkit knows it.
    bool isKnown() const;
    /// What a user reads: "F9", or the keyboard's own number.
    QString shown() const;
    /// A press of it, for what asks about events.
    QKeyEvent press() const;
};

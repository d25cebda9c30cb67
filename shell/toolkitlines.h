#pragma once

#include <QByteArrayList>
#include <QString>

// What the toolkit's own lines mean, over its versions 6.4 to 6.8.

/// Its word, among our own lines, on names in some scripts, whose letters it then takes from
/// another font.
bool isAboutFonts(const QString& message);

/// Its server for VNC looks for its port when the event loop begins, and the program would go on
/// where nobody sees it.
bool isWithoutServer(const QString& message);

/// Of all that it said until it gave up, the line that tells why there is no display.
QByteArray whyNoDisplay(const QByteArrayList& lines);

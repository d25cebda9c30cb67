#pragma once

#include <QString>

class QFile;

/// Opens a regular file, or what a link to one leads to, for reading without a buffer. Never waits
/// for a FIFO and never opens a device. When it fails, `problem` tells a user why in a sentence.
bool openWithProblem(QFile& file, const QString& path, QString& problem);

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The first `maxBytes` bytes of a regular file, or all of a shorter one; what lies beyond is
/// dropped. A link to a regular file is followed. Gives an empty array for an empty file, and
/// nullopt when the file cannot be opened or read or is not a regular one. Never waits for a FIFO
/// and never reads from a device.
std::optional<QByteArray> readRegularFile(const QString& path, qsizetype maxBytes);

/// Makes the bytes of a path out of its text; empty for a text that stands for none.
using PathEncoder = QByteArray (*)(QStringView path);
/// How the texts of this program stand for paths. UTF-8, until it is set by a program whose texts
/// also hold names that are no UTF-8.
void setPathEncoder(PathEncoder encoder);

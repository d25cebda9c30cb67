#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The first `maxBytes` bytes of a regular file, or all of a shorter one; what lies beyond is
/// dropped. A link to a regular file is followed. Gives an empty array for an empty file, and
/// nullopt when the file cannot be opened or read or is not a regular one. Never waits for a FIFO
/// and never reads from a device.
std::optional<QByteArray> readRegularFile(const QString& path, qsizetype maxBytes);

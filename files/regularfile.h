#pragma once

#include "files/filehandle.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <optional>

/// Opens a regular file, or what a link to one leads to, for reading. Never waits for a FIFO and
/// never opens a device. When it fails the handle is not open and errno says why: EISDIR for a
/// folder, ENXIO for anything else that is no regular file.
FileHandle openRegular(const QString& path);

/// The same for what reads from a device of the toolkit, which then owns the descriptor.
bool openRegular(QFile& device, const QString& path,
                 QIODevice::OpenMode mode = QIODevice::ReadOnly);

/// The first `maxBytes` bytes of a regular file, or all of a shorter one. Empty, not null, for an
/// empty file; nullopt if it cannot be opened, as with openRegular(), or read.
std::optional<QByteArray> readRegular(const QString& path, qsizetype maxBytes);

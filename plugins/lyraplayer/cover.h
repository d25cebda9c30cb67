#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <atomic>

/// The picture file beside a file of music that is most likely its cover: "cover", "folder",
/// "front" or "album", in this order, with the extension of a picture, in letters of any case.
/// Empty if there is none.
QString coverBeside(const QString& file);

/// The cover of a file of music, a path as the file system has it: the picture in its tags, or else
/// the one beside it; scaled down to fit into `box`. Null, in short time, if there is none that can
/// be decoded in bounds. Once `cancelled` is set, by another thread, it gives up soon.
QImage readCover(const QByteArray& file, QSize box, const std::atomic<bool>& cancelled);

#pragma once

#include <QString>

#include <functional>

/// The size of the blocks in which files are copied, in bytes.
inline constexpr qint64 CopyBlockBytes = 512 * 1024;

/// Copies one plain file block by block. `progress` runs after every block read, with the number of
/// bytes copied before it; `pause` runs after every block and once before and after all of them.
/// False only when a read or write failed, or the destination could not be opened; what has been
/// written stays then. True with nothing done when the source cannot be opened.
bool copyFileBlocks(const QString& source, const QString& destination,
                    const std::function<void(quint32 done)>& progress,
                    const std::function<void()>& pause);

/// How much of a file is copied, in percent, cut to a whole number; 0 of an empty file. Of a file
/// whose size has wrapped it may be any number.
int copiedPercent(quint32 done, quint32 total);

#pragma once

#include "tests/support/scratchfolder.h"

/// Files that hold nothing of use to their reader, from a missing one to a line without end.

/// Adds a column "kind" and a row for each kind.
void addUnusableKinds();
/// Makes the file `name` of a kind. It must not be there yet.
void makeUnusable(const ScratchFolder& folder, const QString& name, const QString& kind);

/// Measures how much memory a test takes at most.
class PeakMemory
{
public:
    /// Whatever the size of a file, reading it takes less than this.
    static constexpr qint64 Bound = 512 * 1024 * 1024;
    /// The size of a file that cannot be read as a whole within the bound.
    static constexpr qint64 TooMuch = 1024 * 1024 * 1024;

    PeakMemory();
    /// Bytes at the highest point since the construction beyond those at that time.
    qint64 growth() const;

private:
    qint64 before_ = 0;
};

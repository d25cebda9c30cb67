#include "extras/pace.h"

#include <algorithm>
#include <chrono>

namespace
{

constexpr qint64 PieceMicroseconds = 50 * 1000;
constexpr qint64 LeastPiece = 128 * 1024;
constexpr qint64 MostPiece = 16 * 1024 * 1024;

constexpr qint64 BatchMicroseconds = 250 * 1000;
constexpr qint64 LeastBatch = 256 * 1024;
constexpr qint64 MostBatch = 128 * 1024 * 1024;

constexpr qint64 LeastEntries = 16;
constexpr qint64 MostEntries = 2048;

/// Never more than twice or less than half of what it was: one slow moment is no slow medium.
qint64 adapted(qint64 now, qint64 bytes, qint64 microseconds, qint64 aim)
{
    const double fitting = double(bytes) * double(aim) / double(std::max<qint64>(microseconds, 1));
    return qint64(std::clamp(fitting, double(now) / 2, double(now) * 2));
}

} // namespace

qint64 microsecondsNow()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void Pace::notePiece(qint64 bytes, qint64 microseconds)
{
    // What is small says more about a file's beginning than about the medium.
    if (bytes < pieceBytes_ && microseconds < PieceMicroseconds)
        return;
    pieceBytes_ = std::clamp(adapted(pieceBytes_, bytes, microseconds, PieceMicroseconds),
                             LeastPiece, MostPiece);
}

void Pace::noteFlush(qint64 bytes, qint64 entries, qint64 microseconds)
{
    const bool isSlow = microseconds > BatchMicroseconds;
    if (isSlow || bytes >= batchBytes_ / 2)
        batchBytes_ = std::clamp(adapted(batchBytes_, bytes, microseconds, BatchMicroseconds),
                                 LeastBatch, MostBatch);
    if (isSlow || entries >= batchEntries_ / 2)
        batchEntries_ = std::clamp(adapted(batchEntries_, entries, microseconds, BatchMicroseconds),
                                   LeastEntries, MostEntries);
}

#include "extras/journalreader.h"

#include <QtEndian>

#include <algorithm>
#include <unistd.h>

namespace
{

constexpr char Start[] = "quarn journal 2\n";
constexpr char OlderStart[] = "quarn journal 1\n";
constexpr qint64 StartBytes = sizeof Start - 1;
/// Before each record its size, behind it a sum over both.
constexpr qint64 SizeBytes = 4;
constexpr qint64 SumBytes = 8;
/// Two paths and a request of many sources fit.
constexpr qint64 MostBytes = 256 * 1024 * 1024;
/// Two paths as long as the system takes them, and more.
constexpr qint64 MostBytesOfEntry = 64 * 1024;
/// How far behind a damage an intact record is looked for.
constexpr qint64 MostSearched = 1024 * 1024;
constexpr qint64 BufferBytes = 64 * 1024;

/// The 64-bit sum of Fowler, Noll and Vo.
quint64 sumOf(QByteArrayView bytes)
{
    quint64 sum = 0xcbf29ce484222325;
    for (const char byte : bytes)
        sum = (sum ^ uchar(byte)) * 0x100000001b3;
    return sum;
}

} // namespace

JournalReader::JournalReader(int file) : file_(file)
{
    isJournal_ = bytesAt(0, StartBytes) == QByteArrayView(Start, StartBytes);
    isOlder_ = bytesAt(0, StartBytes) == QByteArrayView(OlderStart, StartBytes);
    offset_ = StartBytes;
}

QByteArray JournalReader::fileStart()
{
    return {Start, StartBytes};
}

QByteArray JournalReader::framed(const QByteArray& record)
{
    QByteArray bytes(SizeBytes, 0);
    qToLittleEndian(quint32(record.size()), bytes.data());
    bytes += record;
    QByteArray sum(SumBytes, 0);
    qToLittleEndian(sumOf(bytes), sum.data());
    return bytes + sum;
}

bool JournalReader::next(JournalRecord& record)
{
    if (!isJournal_)
        return false;
    const qint64 size = sizeAt(offset_);
    if (size < 0 || !isIntactAt(offset_))
        return false;
    record = {};
    const qint64 all = SizeBytes + size + SumBytes;
    if (!record.fromBytes(bytesAt(offset_, all).sliced(SizeBytes, size).toByteArray()))
        return false;
    offset_ += all;
    return true;
}

/// Of the record that begins there; -1 if there is none of that size.
qint64 JournalReader::sizeAt(qint64 offset)
{
    const QByteArrayView head = bytesAt(offset, SizeBytes);
    const qint64 size = head.size() < SizeBytes ? -1 : qFromLittleEndian<quint32>(head.data());
    return size > MostBytes ? -1 : size;
}

bool JournalReader::isIntactAt(qint64 offset)
{
    const qint64 size = sizeAt(offset);
    const qint64 all = SizeBytes + size + SumBytes;
    const QByteArrayView bytes = size <= 0 ? QByteArrayView() : bytesAt(offset, all);
    return bytes.size() == all && qFromLittleEndian<quint64>(bytes.data() + SizeBytes + size) ==
                                      sumOf(bytes.first(SizeBytes + size));
}

bool JournalReader::isDamaged()
{
    const qint64 end = lseek(file_, 0, SEEK_END);
    const qint64 searched = std::min(end, offset_ + MostSearched);
    for (qint64 place = offset_ + 1; place < searched; ++place) {
        if (sizeAt(place) <= MostBytesOfEntry && isIntactAt(place))
            return true;
    }
    const qint64 size = sizeAt(offset_);
    if (size < 0 || offset_ + SizeBytes + size + SumBytes > end)
        return false;
    // A file may have got its length before what is in it.
    const QByteArrayView last = bytesAt(end - SumBytes, SumBytes);
    return std::any_of(last.begin(), last.end(), [](char byte) { return byte != 0; });
}

QByteArrayView JournalReader::bytesAt(qint64 offset, qint64 size)
{
    const bool isThere = offset >= bufferAt_ && offset + size <= bufferAt_ + qint64(buffer_.size());
    if (!isThere) {
        // Not more than the file has: a damaged size asks for anything.
        const qint64 left = std::max<qint64>(lseek(file_, 0, SEEK_END) - offset, 0);
        buffer_.resize(std::min(std::max(size, BufferBytes), left));
        bufferAt_ = offset;
        qint64 filled = 0;
        while (filled < buffer_.size()) {
            const ssize_t got = pread(file_, buffer_.data() + filled,
                                      size_t(buffer_.size() - filled), offset + filled);
            if (got <= 0)
                break;
            filled += got;
        }
        buffer_.truncate(filled);
    }
    const qint64 begin = offset - bufferAt_;
    return QByteArrayView(buffer_).sliced(begin, std::min(size, qint64(buffer_.size()) - begin));
}

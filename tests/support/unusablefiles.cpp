#include "tests/support/unusablefiles.h"

#include <QFile>
#include <QTest>

namespace
{

/// The highest amount of memory that this process had in use, bytes.
qint64 highestUse()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').front().toLongLong() * 1024;
    }
    return 0;
}

/// Bytes of every value, none of which makes sense, with line breaks here and there.
QByteArray noise()
{
    QByteArray bytes;
    quint32 state = 12345;
    for (int i = 0; i < 200000; ++i) {
        state = state * 1664525U + 1013904223U;
        bytes.append(char(state >> 24U));
    }
    return bytes;
}

} // namespace

void addUnusableKinds()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind :
         {"missing", "empty", "unreadable", "folder", "FIFO", "device", "link to nothing",
          "link to itself", "binary", "letters without end", "zeros without end"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void makeUnusable(const ScratchFolder& folder, const QString& name, const QString& kind)
{
    QVERIFY(!folder.exists(name));
    if (kind == QLatin1String("empty")) {
        folder.write(name);
    } else if (kind == QLatin1String("unreadable")) {
        folder.write(name, "unreadable");
        folder.setMode(name, 0);
    } else if (kind == QLatin1String("folder")) {
        folder.makeFolder(name);
    } else if (kind == QLatin1String("FIFO")) {
        folder.makeFifo(name);
    } else if (kind == QLatin1String("device")) {
        folder.makeLink(name, QStringLiteral("/dev/zero"));
    } else if (kind == QLatin1String("link to nothing")) {
        folder.makeLink(name, folder.path(QStringLiteral("nothing")));
    } else if (kind == QLatin1String("link to itself")) {
        folder.makeLink(name, folder.path(name));
    } else if (kind == QLatin1String("binary")) {
        folder.write(name, noise());
    } else if (kind == QLatin1String("letters without end")) {
        folder.write(name, QByteArray(48 * 1024 * 1024, 'a'));
    } else if (kind == QLatin1String("zeros without end")) {
        folder.writeSparse(name, PeakMemory::TooMuch);
    } else {
        QCOMPARE(kind, QStringLiteral("missing"));
    }
}

PeakMemory::PeakMemory()
{
    // "5" lets the count of the highest use start anew.
    QFile reset(QStringLiteral("/proc/self/clear_refs"));
    if (reset.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        reset.write("5");
    before_ = highestUse();
}

qint64 PeakMemory::growth() const
{
    return highestUse() - before_;
}

#include "assoc/tablefile.h"

#include "platform/regularfile.h"

#include <QTextStream>

#include <cstdlib>

QStringList readTableLines(const QString& file)
{
    const auto bytes = readRegularFile(file, MaxTableBytes);
    QStringList lines;
    if (!bytes)
        return lines;
    QTextStream stream(*bytes);
    QString line;
    while (lines.size() < MaxTableLines && stream.readLineInto(&line)) {
        if (!QStringView(line).trimmed().isEmpty())
            lines.append(line.left(MaxTableLine));
    }
    return lines;
}

int columnNumber(const QString& line, int column, int width)
{
    return int(std::strtol(line.mid(column, width).toLatin1().constData(), nullptr, 10));
}

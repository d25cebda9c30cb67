#include "assoc/tablefile.h"

#include "files/regularfile.h"
#include "files/textlines.h"

#include <cstdlib>

QStringList readTableLines(const QString& file)
{
    const auto bytes = readRegular(file, MaxTableBytes);
    QStringList lines;
    if (!bytes)
        return lines;
    TextLines all(*bytes);
    while (lines.size() < MaxTableLines && !all.atEnd()) {
        const QString line = all.next();
        if (!QStringView(line).trimmed().isEmpty())
            lines.append(line.left(MaxTableLine));
    }
    return lines;
}

int columnNumber(const QString& line, int column, int width)
{
    return int(std::strtol(line.mid(column, width).toLatin1().constData(), nullptr, 10));
}

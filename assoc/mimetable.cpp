#include "assoc/mimetable.h"

#include "assoc/tablefile.h"

std::vector<mime_struct> mimes;
int mime_nums = 0;

mime_struct parseMimeLine(const QString& line)
{
    return {line.mid(7, 20).toUpper(), columnNumber(line, 4, 2), columnNumber(line, 0, 3)};
}

void loadMimes(const QString& file)
{
    for (const QString& line : readTableLines(file)) {
        const mime_struct mime = parseMimeLine(line);
        // It would be about all names that end with a dot.
        if (mime.ext.isEmpty())
            continue;
        mimes.push_back(mime);
        ++mime_nums;
    }
}

QString mimeOf(const QString& path)
{
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QStringLiteral("unknown") : path.mid(dot + 1).toUpper();
}

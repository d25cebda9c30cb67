#include "files/textlines.h"

#include "files/names.h"

TextLines::TextLines(const QByteArray& content) : content_(content)
{
    if (content_.startsWith(ByteOrderMark))
        position_ = ByteOrderMark.size();
}

QString TextLines::next()
{
    if (atEnd())
        return {};
    const qsizetype found = content_.indexOf('\n', position_);
    const qsizetype end = found < 0 ? content_.size() : found;
    QByteArrayView line = QByteArrayView(content_).sliced(position_, end - position_);
    position_ = end + 1;
    if (line.endsWith('\r'))
        line.chop(1);
    const QString text = decodeName(line);
    return text.isNull() ? QStringLiteral("") : text;
}

#include "shell/toolkitlines.h"

namespace
{

/// What it has to say of a plugin whenever that cannot be used, whatever the reason.
bool isHint(const QByteArray& line)
{
    return line.contains("is needed to load the Qt");
}

} // namespace

bool isAboutFonts(const QString& message)
{
    return QStringView(message).trimmed().startsWith(
        QLatin1String("OpenType support missing for "));
}

bool isWithoutServer(const QString& message)
{
    return message.startsWith(QLatin1String("QVncServer could not connect"));
}

/// What failed stands before the toolkit's word on its plugin, or first.
QByteArray whyNoDisplay(const QByteArrayList& lines)
{
    for (qsizetype i = 1; i < lines.size(); ++i) {
        if (!lines.at(i).contains("Qt platform plugin"))
            continue;
        qsizetype why = i - 1;
        while (why > 0 && isHint(lines.at(why)))
            --why;
        return lines.at(why);
    }
    return lines.value(0, "the toolkit does not say why");
}

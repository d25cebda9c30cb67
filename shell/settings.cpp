#include "shell/settings.h"

#include "files/names.h"
#include "platform/zconfig.h"

#include <QDebug>

#include <algorithm>
#include <cstdlib>
#include <limits>

QString work_folder;
QString path_tab1 = QStringLiteral("/");
QString path_tab2 = QStringLiteral("/");
QString lang;
bool full_scr = true;
int header_type = 3;
bool full_inf = false;
Extras extras;

namespace
{

/// One of the group "Extras": 0 or 1. What is neither is a mistake that the user should hear of.
int extraOf(const ZConfig& config, const char* key)
{
    const QString value =
        config.readEntry(QStringLiteral("Extras"), QString::fromLatin1(key), QStringLiteral("0"));
    bool isNumber = false;
    const int number = value.toInt(&isNumber, 10);
    if (isNumber && (number == 0 || number == 1))
        return number;
    qWarning("fm.cfg: %s: neither 0 nor 1: %s", key, qUtf8Printable(value.left(80)));
    return 0;
}

/// One that is misspelt would be off without a word.
void nameUnknownExtras(const ZConfig& config)
{
    constexpr int MostNamed = 10;
    static const QStringList known{QStringLiteral("Find"),  QStringLiteral("Status"),
                                   QStringLiteral("Theme"), QStringLiteral("Motion"),
                                   QStringLiteral("Safe"),  QStringLiteral("Trash")};
    int named = 0;
    for (const QString& key : config.keysOf(QStringLiteral("Extras"))) {
        if (known.contains(key))
            continue;
        qWarning("fm.cfg: %s: no key of [Extras]", qUtf8Printable(key.left(80)));
        if (++named == MostNamed)
            return;
    }
}

} // namespace

void readConfig(const QString& programDir)
{
    const ZConfig config(programDir + QStringLiteral("fm.cfg"), true);
    const auto text = [&config](const char* key) {
        return config.readEntry(QStringLiteral("Setting"), QString::fromLatin1(key),
                                QStringLiteral(""));
    };
    // A path's very bytes, whatever they are.
    const auto path = [&config](const char* key) {
        const QByteArray bytes =
            config.readBytes(QStringLiteral("Setting"), QString::fromLatin1(key));
        return bytes.isEmpty() ? QStringLiteral("") : decodeName(bytes);
    };
    const auto number = [&text](const char* key) {
        const long value = std::strtol(text(key).toLatin1().constData(), nullptr, 10);
        // Cut off, a number beyond the range could become 0.
        return int(std::clamp<long>(value, std::numeric_limits<int>::min(),
                                    std::numeric_limits<int>::max()));
    };
    work_folder = path("Work_folder");
    if (work_folder.isEmpty())
        work_folder = QString();
    path_tab1 = path("Start_path_tab1");
    path_tab2 = path("Start_path_tab2");
    lang = path("Language");
    full_scr = number("Full_screen") != 0;
    header_type = number("Header_type");
    full_inf = number("Full_info") != 0;
    extras.find = extraOf(config, "Find") != 0;
    extras.status = extraOf(config, "Status") != 0;
    extras.theme = extraOf(config, "Theme");
    extras.motion = extraOf(config, "Motion") != 0;
    extras.safe = extraOf(config, "Safe") != 0;
    extras.trash = extraOf(config, "Trash") != 0;
    nameUnknownExtras(config);
}

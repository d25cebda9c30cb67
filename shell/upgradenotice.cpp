#include "shell/upgradenotice.h"

#include "files/entry.h"
#include "files/names.h"
#include "files/programnames.h"
#include "files/regularfile.h"
#include "lang/languagereader.h"
#include "lang/texts.h"
#include "widgets/kwidget.h"

#include <algorithm>
#include <optional>

namespace
{

constexpr qsizetype MostBytes = 65536;
const char FileVariable[] = "QUARN_NOTICE";

struct NoticeTexts {
#define TEXT(name, key, english) QString name = QStringLiteral(english);
#include "shell/noticetextlist.inc"
#undef TEXT
};

constexpr KeyedText<NoticeTexts> NoticeTextKeys[] = {
#define TEXT(name, key, english) {&NoticeTexts::name, key},
#include "shell/noticetextlist.inc"
#undef TEXT
};

void addOnce(QStringList& names, const QString& name)
{
    if (!names.contains(name))
        names.append(name);
}

void addLine(UpgradeNotice& notice, const QString& kind, const QString& text)
{
    if (kind == QLatin1String("version"))
        notice.version = text;
    else if (kind == QLatin1String("folder"))
        notice.folder = text;
    else if (kind == QLatin1String("setting"))
        addOnce(notice.settings, text);
    else if (kind == QLatin1String("new"))
        addOnce(notice.added, text);
    else if (kind == QLatin1String("renewed"))
        addOnce(notice.renewed, text);
    else if (kind == QLatin1String("kept"))
        addOnce(notice.kept, text);
}

/// A part of the box, between rules; nothing if there are no names.
QString partOf(const QString& heading, const QStringList& names, const QString& more)
{
    constexpr qsizetype MostNames = 3;
    if (names.isEmpty())
        return {};
    const qsizetype left = names.size() - MostNames;
    return QStringLiteral("<hr>") + heading + QLatin1Char('\n') +
           names.first(std::min(names.size(), MostNames)).join(QStringLiteral(", ")) +
           (left > 0 ? QLatin1Char('\n') + withNumber(more, int(left)) : QString());
}

bool saysNothing(const UpgradeNotice& notice)
{
    return notice.settings.isEmpty() && notice.added.isEmpty() && notice.renewed.isEmpty() &&
           notice.kept.isEmpty();
}

} // namespace

UpgradeNotice parsedNotice(const QByteArray& content)
{
    UpgradeNotice notice;
    for (const QByteArray& line : content.split('\n')) {
        const qsizetype blank = line.indexOf(' ');
        if (blank > 0 && blank + 1 < line.size())
            addLine(notice, QString::fromLatin1(line.first(blank)),
                    decodeName(line.sliced(blank + 1)));
    }
    return notice;
}

QString noticeText(const UpgradeNotice& notice, const QString& languageFile)
{
    const auto texts = readTexts(languageFile, NoticeTextKeys);
    return ProgramNames::Program + QLatin1Char(' ') + notice.version +
           partOf(texts.settings, notice.settings, texts.more) +
           partOf(texts.added, notice.added, texts.more) +
           partOf(texts.renewed, notice.renewed, texts.more) +
           partOf(QString(texts.kept).replace(QLatin1String("%1"), notice.folder), notice.kept,
                  texts.more);
}

QString takeNoticeFile()
{
    const QByteArray file = qgetenv(FileVariable);
    if (file.isNull())
        return {};
    qunsetenv(FileVariable);
    return decodeName(file);
}

void showNotice(const QString& file)
{
    const std::optional<QByteArray> content = readRegular(file, MostBytes);
    if (!content || !removeFile(file))
        return;
    const UpgradeNotice notice = parsedNotice(*content);
    if (saysNothing(notice))
        return;
    textView->showText(readTexts(languageFileInUse(), NoticeTextKeys).title,
                       noticeText(notice, languageFileInUse()), Qt::AlignLeft,
                       QStringLiteral("res/img/open_with.png"), kWidget::Message);
}

#include "extras/trashwords.h"

#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "files/entrytexts.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/zlistrowpainter.h"

#include <sys/stat.h>

namespace
{

QString typeText(unsigned mode)
{
    if (S_ISLNK(mode))
        return LANG_SYMLINK;
    if (S_ISDIR(mode))
        return LANG_FOLDER;
    return S_ISREG(mode) ? LANG_FILE : LANG_UNK;
}

QString propertyLine(const QString& what, const QString& value)
{
    return QLatin1Char(' ') + what + QStringLiteral(": ") + value;
}

} // namespace

TrashFailure failureOf(const TrashEntry& entry, const Trash::Result& result)
{
    return {entry.pathOrName(), result.outcome, result.error};
}

QString reasonText(const TrashFailure& failure)
{
    const SafeTexts& texts = SafeTexts::instance();
    switch (failure.outcome) {
    case Trash::Outcome::Refused:
        return texts.holdsTrash;
    case Trash::Outcome::Gone:
        return texts.missing;
    case Trash::Outcome::NoTrash:
        return failure.error != 0 ? errorText(failure.error) : texts.noTrash;
    case Trash::Outcome::Done:
    case Trash::Outcome::Elsewhere:
    case Trash::Outcome::Taken:
    case Trash::Outcome::Failed:
        break;
    }
    return errorText(failure.error);
}

QString formerNameText(const TrashEntry& entry)
{
    return ZListRowPainter::visibleText(decodeName(entry.formerName()));
}

QString formerFolderText(const TrashEntry& entry)
{
    return entry.path.isEmpty() ? SafeTexts::instance().unknownPlace : shownFolderOf(entry.path);
}

QString deletedText(const TrashEntry& entry)
{
    return entry.deleted > 0 ? dateText(entry.deleted) : QString();
}

QString amountText(const TrashEntry& entry, const TrashAmount& amount)
{
    return S_ISDIR(entry.mode) ? amountText(amount) : wideSizeText(amount.bytes());
}

QString amountText(const TrashAmount& amount)
{
    return amountText(amount.entries(), amount.bytes());
}

QString propertiesText(const TrashEntry& entry)
{
    QStringList lines{propertyLine(LANG_TYPE, typeText(entry.mode)),
                      propertyLine(LANG_NAME, formerNameText(entry)),
                      propertyLine(LANG_PATH, formerFolderText(entry))};
    QStringList more;
    if (entry.bytes >= 0)
        more.append(propertyLine(LANG_SIZE, wideSizeText(entry.bytes)));
    if (entry.deleted > 0)
        more.append(QLatin1Char(' ') +
                    filledText(SafeTexts::instance().deletedOn,
                               QDateTime::fromSecsSinceEpoch(entry.deleted)
                                   .toString(QStringLiteral("dd/MM/yyyy HH:mm"))));
    more.append(propertyLine(SafeTexts::instance().trash,
                             ZListRowPainter::visibleText(decodeName(entry.trash))));
    return lines.join(QLatin1Char('\n')).replace(QLatin1Char('<'), QChar(0x2039)) +
           QStringLiteral("<hr>") +
           more.join(QLatin1Char('\n')).replace(QLatin1Char('<'), QChar(0x2039));
}

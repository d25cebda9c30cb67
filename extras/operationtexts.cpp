#include "extras/operationtexts.h"

#include "extras/metadata.h"
#include "extras/safetexts.h"
#include "files/entrytexts.h"
#include "files/names.h"
#include "files/paths.h"
#include "lang/texts.h"
#include "platform/zlistrowpainter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace
{

constexpr int Minute = 60;
constexpr int Hour = 60 * Minute;
constexpr qint64 NanosecondsPerSecond = 1000000000;

QString twoDigits(int number)
{
    return QString::number(number).rightJustified(2, QLatin1Char('0'));
}

QString shown(const QString& text)
{
    return ZListRowPainter::visibleText(text);
}

} // namespace

QString durationText(int seconds)
{
    if (seconds < Minute)
        return QString::number(seconds) + QStringLiteral(" s");
    const QString end = QLatin1Char(':') + twoDigits(seconds % Minute);
    if (seconds < Hour)
        return QString::number(seconds / Minute) + end;
    return QString::number(seconds / Hour) + QLatin1Char(':') + twoDigits(seconds % Hour / Minute) +
           end;
}

QString filledText(const QString& text, const QString& first)
{
    return filledText(text, first, QString());
}

QString filledText(const QString& text, const QString& first, const QString& second)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QStringView mark = QStringView(text).mid(i, 2);
        const bool isFirst = mark == QLatin1String("%1");
        if (isFirst || mark == QLatin1String("%2")) {
            result += isFirst ? first : second;
            ++i;
        } else {
            result += text.at(i);
        }
    }
    return result;
}

QString titleOf(OperationKind kind)
{
    switch (kind) {
    case OperationKind::Copy:
        return LANG_COPYING;
    case OperationKind::Move:
        return LANG_MOVING;
    case OperationKind::Delete:
        break;
    }
    return SafeTexts::instance().deleting;
}

QString shownNameOf(const QByteArray& path)
{
    return shown(lastPart(decodeName(path)));
}

QString shownFolderOf(const QByteArray& path)
{
    const QString folder = folderPart(decodeName(path));
    return shown(folder.size() > 1 ? folder.chopped(1) : folder);
}

QString namesText(const QList<QByteArray>& paths)
{
    constexpr qsizetype MostNames = 4;
    constexpr int MostLetters = 60;
    QStringList lines;
    for (const QByteArray& path : paths.first(std::min(paths.size(), MostNames))) {
        QString name = paths.size() == 1 ? shown(decodeName(path)) : shownNameOf(path);
        // The mark of a rule is none in a name.
        name.replace(QLatin1Char('<'), QChar(0x2039));
        if (paths.size() > 1 && name.size() > MostLetters)
            name = name.left(MostLetters / 2) + QChar(0x2026) + name.right(MostLetters / 2);
        lines.append(name);
    }
    if (paths.size() > MostNames)
        lines.append(
            filledText(SafeTexts::instance().more, QString::number(paths.size() - MostNames)));
    return lines.join(QLatin1Char('\n'));
}

QString troubleText(Trouble trouble)
{
    const SafeTexts& texts = SafeTexts::instance();
    switch (trouble) {
    case Trouble::SameFile:
        return texts.sameFile;
    case Trouble::IntoItself:
        return texts.intoItself;
    case Trouble::Missing:
        return texts.missing;
    case Trouble::NotAllowed:
        return texts.notAllowed;
    case Trouble::BadName:
        return texts.badName;
    case Trouble::TooLarge:
        return texts.tooLarge;
    case Trouble::NameCollision:
        return texts.nameCollision;
    case Trouble::TargetUnusable:
        return texts.targetUnusable;
    case Trouble::CannotRead:
        return LANG_CANNOT_READ;
    case Trouble::CannotWrite:
        return texts.writeFailed;
    case Trouble::CannotMake:
        return texts.makeFailed;
    case Trouble::CannotRename:
        return texts.renameFailed;
    case Trouble::CannotRemove:
        return texts.removeFailed;
    case Trouble::CannotKeep:
        return texts.keepFailed;
    case Trouble::Replaced:
        return texts.replacedOne;
    case Trouble::NotesDamaged:
        return texts.damaged;
    case Trouble::SourceChanged:
    case Trouble::ChangedSince:
        break;
    }
    return texts.sourceChanged;
}

QString errorText(int error)
{
    const SafeTexts& texts = SafeTexts::instance();
    switch (error) {
    case 0:
        return {};
    case ENOSPC:
        return texts.noSpaceLeft;
    case EDQUOT:
        return texts.quotaFull;
    case EACCES:
    case EPERM:
        return texts.notAllowed;
    case EROFS:
        return texts.readOnly;
    case EIO:
        return texts.mediumFault;
    case ENODEV:
    case ENXIO:
        return texts.driveGone;
    case ENOENT:
        return texts.missing;
    case ENAMETOOLONG:
        return texts.nameTooLong;
    case EFBIG:
        return texts.tooLarge;
    case EBUSY:
    case ETXTBSY:
        return texts.inUse;
    case EEXIST:
        return LANG_RENAME_EXISTS;
    case ENOTEMPTY:
        return texts.notEmpty;
    default:
        return decodeName(std::strerror(error));
    }
}

QString reasonText(const Failure& failure)
{
    // What is made under a name of ours and cannot get its own has one that is not possible there.
    if (failure.trouble == Trouble::CannotRename &&
        (failure.error == EINVAL || failure.error == EILSEQ))
        return troubleText(Trouble::BadName);
    const bool isRefused =
        failure.trouble < Trouble::CannotRead && failure.trouble != Trouble::NotAllowed;
    const QString said = isRefused ? QString() : errorText(failure.error);
    return said.isEmpty() ? troubleText(failure.trouble) : said;
}

QString lacksText(unsigned lacks)
{
    const SafeTexts& texts = SafeTexts::instance();
    QStringList words;
    const auto add = [&words, lacks](unsigned lack, const QString& word) {
        if ((lacks & lack) != 0)
            words.append(word);
    };
    add(LacksOwner, LANG_OWNER);
    add(LacksRights, texts.rights);
    add(LacksTime, texts.fileTime);
    add(LacksAttributes, texts.attributes);
    return words.join(QStringLiteral(", "));
}

QString answerText(Answer answer)
{
    const SafeTexts& texts = SafeTexts::instance();
    switch (answer) {
    case Answer::Replace:
        return texts.replace;
    case Answer::KeepBoth:
        return texts.keepBoth;
    case Answer::LeaveOut:
        break;
    }
    return texts.leaveOut;
}

QString factsText(const EntryFacts& facts)
{
    const QString date = dateText(facts.modified / NanosecondsPerSecond);
    QString what = LANG_UNK;
    if (facts.type == EntryType::File)
        what = wideSizeText(facts.size);
    else if (facts.type == EntryType::Folder)
        what = LANG_FOLDER;
    else if (facts.type == EntryType::Link)
        what = LANG_SYMLINK;
    return date.isEmpty() ? what : what + QStringLiteral(", ") + date;
}

QString amountText(qint64 entries, qint64 bytes)
{
    return filledText(SafeTexts::instance().entries, QString::number(entries)) +
           QStringLiteral(", ") + wideSizeText(bytes);
}

QString doneText(const OperationProgress& progress)
{
    if (progress.bytesTotal > 0)
        return wideSizeText(progress.bytesDone) + QStringLiteral(" / ") +
               wideSizeText(progress.bytesTotal);
    return QString::number(progress.entriesDone) + QStringLiteral(" / ") +
           QString::number(progress.entriesTotal);
}

QString paceText(const OperationProgress& progress)
{
    QString text;
    if (progress.bytesPerSecond >= 1)
        text = wideSizeText(qint64(progress.bytesPerSecond)) + QStringLiteral("/s");
    if (progress.secondsLeft >= 0) {
        if (!text.isEmpty())
            text += QStringLiteral("   ");
        text += filledText(SafeTexts::instance().timeLeft, durationText(progress.secondsLeft));
    }
    return text;
}

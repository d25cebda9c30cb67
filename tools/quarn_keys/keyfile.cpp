#include "tools/quarn_keys/keyfile.h"

#include "files/entry.h"
#include "files/filehandle.h"
#include "files/names.h"
#include "files/paths.h"
#include "files/regularfile.h"
#include "platform/keyline.h"
#include "platform/keymap.h"

#include <QKeySequence>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr char Head[] =
    "; Keys of Quarn, read when it starts. Lines beginning with \";\" are comments.\n";
constexpr char Mark[] = "; Given with quarn-keys:";
constexpr mode_t EverybodysFile = 0644;

KeyLine lineOf(const QByteArray& bytes)
{
    return KeyLine::of(QString::fromUtf8(bytes));
}

/// Whether an answer takes the place of a line.
bool replaces(const KeyAnswer& answer, const KeyLine& line)
{
    switch (line.kind) {
    case KeyLine::Key:
        return line.code == answer.code || (answer.key.isKnown() && line.number == answer.key.key);
    case KeyLine::Scan:
        return line.code == answer.code || quint32(line.number) == answer.key.scan;
    default:
        return false;
    }
}

QByteArray codeText(int code)
{
    return code < 0x80 ? QByteArray(1, char(code)) : "0x" + QByteArray::number(code, 16);
}

/// The line that names a key as the toolkit does.
QByteArray keyLineFor(const KeyAnswer& answer)
{
    const QByteArray end = " = " + codeText(answer.code) + '\n';
    const QByteArray line =
        QKeySequence(answer.key.key).toString(QKeySequence::PortableText).toUtf8() + end;
    const KeyLine read = lineOf(line);
    // Some names are comments, or what divides a line.
    if (read.kind == KeyLine::Key && read.number == answer.key.key && read.code == answer.code)
        return line;
    return "0x" + QByteArray::number(answer.key.key, 16) + end;
}

QByteArray lineFor(const KeyAnswer& answer, const QList<KeyAnswer>& answers)
{
    const auto isTwin = [&answer](const KeyAnswer& other) {
        return other.code != answer.code && other.key.key == answer.key.key;
    };
    const bool isShared =
        answer.key.scan != 0 && std::any_of(answers.begin(), answers.end(), isTwin);
    if (answer.key.isKnown() && !isShared)
        return keyLineFor(answer);
    return "scan:" + QByteArray::number(answer.key.scan) + " = " + codeText(answer.code) + '\n';
}

/// Where the new content is written first; goes with it unless it was kept.
class NewFile
{
public:
    explicit NewFile(const QByteArray& target) : name_(target + ".XXXXXX")
    {
        file_.reset(::mkostemp(name_.data(), O_CLOEXEC));
    }
    ~NewFile()
    {
        if (file_.isOpen() || isMade_)
            ::unlink(name_.constData());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool isOpen() const { return file_.isOpen(); }
    bool write(const QByteArray& content)
    {
        qsizetype done = 0;
        while (done < content.size()) {
            const ssize_t count =
                ::write(file_.get(), content.constData() + done, size_t(content.size() - done));
            if (count < 0 && errno != EINTR)
                return false;
            done += std::max<ssize_t>(count, 0);
        }
        return true;
    }
    /// Makes it what another file is to others; their owner too, where that is allowed.
    bool takeAfter(const QByteArray& target)
    {
        struct stat old = {};
        if (::stat(target.constData(), &old) != 0) {
            const mode_t mask = ::umask(0);
            ::umask(mask);
            return ::fchmod(file_.get(), EverybodysFile & ~mask) == 0;
        }
        if (::fchown(file_.get(), old.st_uid, old.st_gid) != 0 && errno != EPERM)
            return false;
        return ::fchmod(file_.get(), old.st_mode & 07777) == 0;
    }
    bool putAt(const QByteArray& target)
    {
        isMade_ = true;
        if (::fsync(file_.get()) != 0 || !file_.close() ||
            std::rename(name_.constData(), target.constData()) != 0)
            return false;
        isMade_ = false;
        return true;
    }

private:
    QByteArray name_;
    FileHandle file_;
    bool isMade_ = false;
};

/// So that the new name outlives a sudden end of the system, as far as the file system helps.
void settleFolder(const QByteArray& target)
{
    const QByteArray folder = target.left(target.lastIndexOf('/') + 1);
    const FileHandle handle(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (handle.isOpen())
        ::fsync(handle.get());
}

/// nullopt, with errno set, if there is something that cannot be read whole.
std::optional<QByteArray> readOld(const QString& path)
{
    const auto content = readRegular(path, KeyMap::MaxFileBytes + 1);
    if (content && content->size() > KeyMap::MaxFileBytes) {
        errno = EFBIG;
        return std::nullopt;
    }
    return content || errno != ENOENT ? content : QByteArray();
}

int replaceFile(const QByteArray& target, const QByteArray& content)
{
    NewFile file(target);
    if (!file.isOpen() || !file.write(content) || !file.takeAfter(target) || !file.putAt(target))
        return errno;
    settleFolder(target);
    return 0;
}

} // namespace

QByteArray keyFileWith(const QByteArray& old, const QList<KeyAnswer>& answers)
{
    QByteArray kept;
    KeyMap map;
    bool hasMark = false;
    for (qsizetype start = 0; start < old.size();) {
        const qsizetype end = old.indexOf('\n', start);
        const QByteArray bytes = old.mid(start, end < 0 ? -1 : end + 1 - start);
        start += bytes.size();
        const KeyLine line = lineOf(bytes);
        if (std::any_of(answers.begin(), answers.end(),
                        [&line](const KeyAnswer& answer) { return replaces(answer, line); }))
            continue;
        hasMark = hasMark || bytes.startsWith(Mark);
        map.add(line);
        kept += bytes;
    }
    QByteArray added;
    for (const KeyAnswer& answer : answers) {
        if (map.code(answer.key.press()) == answer.code)
            continue;
        const QByteArray line = lineFor(answer, answers);
        map.add(lineOf(line));
        added += line;
    }
    if (kept.isEmpty())
        kept = Head;
    else if (!kept.endsWith('\n'))
        kept += '\n';
    if (!added.isEmpty() && !hasMark)
        kept += QByteArrayLiteral("\n") + Mark + '\n';
    return kept + added;
}

int writeKeyFile(const QString& path, const QList<KeyAnswer>& answers)
{
    const auto old = readOld(path);
    if (!old)
        return errno;
    const QString real = canonicalPath(path);
    return replaceFile(encodedPath(real.isEmpty() ? path : real), keyFileWith(*old, answers));
}

QByteArray readKeyFile(const QString& path)
{
    return readOld(path).value_or(QByteArray());
}

#include "tests/extras/operationplaces.h"

#include "tests/tools/treetext.h"

#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace fs = std::filesystem;

OperationPlaces::OperationPlaces(Where where) : near_(otherPlace())
{
    if (where == ApartInMemory)
        small_.emplace();
    if (where != Together)
        far_.emplace(small_ && small_->isMounted() ? small_->path() : usualPlace());
    making::folder(near_.path("target"));
    making::folder(near_.path("state"));
    making::folder(source());
    qputenv("XDG_STATE_HOME", state());
}

QByteArray OperationPlaces::source(const QByteArray& name) const
{
    const QByteArray folder = far_ ? far_->path("source") : near_.path("source");
    return name.isEmpty() ? folder : folder + '/' + name;
}

QByteArray OperationPlaces::target(const QByteArray& name) const
{
    return near_.path(name.isEmpty() ? QByteArray("target") : "target/" + name);
}

QList<QByteArray> OperationPlaces::journals() const
{
    QList<QByteArray> names;
    std::error_code error;
    for (const auto& entry :
         fs::directory_iterator((state() + "/quarn/journals").toStdString(), error))
        names.append(QByteArray::fromStdString(entry.path().filename().string()));
    return names;
}

OperationRequest OperationPlaces::request(OperationKind kind, const QByteArrayList& names) const
{
    OperationRequest request;
    request.kind = kind;
    for (const QByteArray& name : names)
        request.sources.append(source(name));
    request.target = target();
    return request;
}

void runWell(const OperationRequest& request, Answer answer)
{
    Operation operation(request);
    runToEnd(operation, answer);
    for (const Failure& failure : operation.failures().first)
        QFAIL((failure.path + ": " + QByteArray::number(int(failure.trouble)) + ' ' +
               std::strerror(failure.error))
                  .constData());
    QCOMPARE(operation.state(), Operation::State::Finished);
}

QByteArrayList toldLines(const Operation& operation)
{
    QByteArrayList lines;
    for (const Failure& failure : operation.failures().first)
        lines.append(toldLine(failure.path.constData() + failure.path.lastIndexOf('/') + 1,
                              failure.trouble, failure.error));
    return lines;
}

QByteArray toldLine(const char* name, Trouble trouble, int error)
{
    return QByteArray(name) + ' ' + QByteArray::number(int(trouble)) + ' ' +
           QByteArray::number(error);
}

void ageAll(const QByteArray& path)
{
    std::error_code error;
    const auto options = fs::directory_options::skip_permission_denied;
    for (const auto& entry : fs::recursive_directory_iterator(path.toStdString(), options, error))
        making::age(QByteArray::fromStdString(entry.path().string()), 1300000000);
    making::age(path, 1300000000);
}

void makeEveryKind(const QByteArray& path)
{
    making::folder(path);
    making::file(path + "/file", QByteArray(5000, 'f'), 0640);
    making::file(path + "/empty", {});
    making::file(path + "/odd\xff\n'$(x)", "odd", 0444);
    QCOMPARE(setxattr((path + "/file").constData(), "user.quarn", "kept", 4, 0), 0);
    QCOMPARE(link((path + "/file").constData(), (path + "/file again").constData()), 0);
    making::file(path + "/holes", "begin");
    QCOMPARE(truncate((path + "/holes").constData(), 300000), 0);
    making::symbolicLink(path + "/dangling", "no/where");
    making::fifo(path + "/fifo");
    making::folder(path + "/sub");
    making::file(path + "/sub/in", "in", 0600);
    QCOMPARE(link((path + "/file").constData(), (path + "/sub/linked").constData()), 0);
    making::folder(path + "/sub/deep", 0700);
    making::folder(path + "/locked");
    making::file(path + "/locked/inside", "l");
    QCOMPARE(chmod((path + "/locked").constData(), 0555), 0);
    ageAll(path);
}

namespace
{

QByteArray attributesOf(const std::string& path)
{
    char names[256];
    char value[256];
    const ssize_t size = llistxattr(path.c_str(), names, sizeof names);
    QByteArray text;
    for (ssize_t at = 0; at < size; at += ssize_t(std::strlen(names + at)) + 1) {
        const ssize_t length = lgetxattr(path.c_str(), names + at, value, sizeof value);
        text += QByteArray(" ") + (names + at) + '=' +
                QByteArray(value, qsizetype(std::max<ssize_t>(length, 0)));
    }
    return text;
}

void addMore(const fs::path& top, const fs::path& path, QByteArrayList& lines,
             std::map<ino_t, QByteArrayList>& linked)
{
    struct stat info = {};
    if (lstat(path.c_str(), &info) != 0)
        return;
    const auto name = QByteArray::fromStdString(path.string().substr(top.string().size()));
    if (S_ISREG(info.st_mode) && info.st_nlink > 1)
        linked[info.st_ino].append(name);
    // A part of a file that was never written takes no room.
    if (S_ISREG(info.st_mode) && info.st_size > 100000)
        lines.append(name + (info.st_blocks * 512 < info.st_size / 2 ? " has holes" : " is full"));
    const QByteArray attributes =
        S_ISREG(info.st_mode) ? attributesOf(path.string()) : QByteArray();
    if (!attributes.isEmpty())
        lines.append(name + " attributes" + attributes);
    if (!S_ISDIR(info.st_mode))
        return;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(path, error))
        addMore(top, entry.path(), lines, linked);
}

} // namespace

QByteArrayList wholeText(const QByteArray& path)
{
    QByteArrayList lines = treeText(path);
    std::map<ino_t, QByteArrayList> linked;
    addMore(path.toStdString(), path.toStdString(), lines, linked);
    for (auto& [inode, names] : linked) {
        std::sort(names.begin(), names.end());
        lines.append("one file: " + names.join(" = "));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

QByteArrayList withoutFolderTimes(QByteArrayList lines)
{
    for (QByteArray& line : lines) {
        const qsizetype start = line.lastIndexOf(" time ");
        if (start >= 0 && line.contains(" mode 40"))
            line.truncate(start);
    }
    return lines;
}

QByteArray differences(const QByteArrayList& expected, const QByteArrayList& now)
{
    QByteArray text;
    for (const QByteArray& line : expected)
        text += now.contains(line) ? QByteArray() : "- " + line + '\n';
    for (const QByteArray& line : now)
        text += expected.contains(line) ? QByteArray() : "+ " + line + '\n';
    return text;
}

#include "extras/journalrecord.h"

#include <QDataStream>
#include <QIODevice>

namespace
{

constexpr auto Version = QDataStream::Qt_6_0;

void writeRequest(QDataStream& stream, const OperationRequest& request)
{
    stream << quint8(request.kind) << request.sources << request.target << request.newName;
}

bool readRequest(QDataStream& stream, OperationRequest& request)
{
    quint8 kind = 0;
    stream >> kind >> request.sources >> request.target >> request.newName;
    request.kind = OperationKind(kind);
    return kind <= quint8(OperationKind::Delete) && !request.sources.isEmpty();
}

} // namespace

void JournalRecord::setFacts(const struct stat& info)
{
    mode = info.st_mode;
    user = info.st_uid;
    group = info.st_gid;
    links = quint32(info.st_nlink);
    size = info.st_size;
    modified = nanoseconds(info.st_mtim);
    accessed = nanoseconds(info.st_atim);
    origin = EntryIdentity::of(info);
}

struct stat JournalRecord::facts() const
{
    struct stat info = {};
    info.st_mode = mode;
    info.st_uid = user;
    info.st_gid = group;
    info.st_nlink = links;
    info.st_size = size;
    info.st_mtim = timeOf(modified);
    info.st_atim = timeOf(accessed);
    info.st_dev = dev_t(origin.device);
    info.st_ino = ino_t(origin.inode);
    return info;
}

void JournalRecord::setMade(const EntryMark& mark)
{
    identity = mark.identity;
    madeSize = mark.size;
    madeModified = mark.modified;
}

EntryMark JournalRecord::made() const
{
    return {{0, identity.inode}, mode & S_IFMT, madeSize, madeModified, 0};
}

EntryMark JournalRecord::originMark() const
{
    return {{0, origin.inode}, mode & S_IFMT, size, modified, 0};
}

void JournalRecord::setMark(const EntryMark& mark)
{
    identity = mark.identity;
    mode = mark.kind;
    size = mark.size;
    modified = mark.modified;
    born = mark.born;
}

EntryMark JournalRecord::mark() const
{
    return {{0, identity.inode}, mode & S_IFMT, size, modified, born};
}

QByteArray JournalRecord::toBytes() const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(Version);
    stream << quint8(type);
    switch (type) {
    case Type::Request:
        writeRequest(stream, request);
        stream << started;
        break;
    case Type::Decision:
    case Type::DecisionForAll:
        stream << from << quint8(answer);
        break;
    case Type::Aside:
        stream << to << temporary;
        break;
    case Type::Damage:
    case Type::Cancelled:
    case Type::Resumed:
        break;
    case Type::Source:
    case Type::Place:
        stream << source << identity.device << identity.inode << mode << size << modified << born
               << fileSystem;
        break;
    case Type::Made:
    case Type::Moved:
    case Type::Joined:
        stream << source << from << to << identity.device << identity.inode << origin.device
               << origin.inode << replaces << mode << user << group << links << size << modified
               << accessed << madeSize << madeModified;
        break;
    }
    return bytes;
}

bool JournalRecord::fromBytes(const QByteArray& bytes)
{
    QDataStream stream(bytes);
    stream.setVersion(Version);
    quint8 number = 0;
    quint8 given = 0;
    stream >> number;
    type = Type(number);
    switch (type) {
    case Type::Request:
        if (!readRequest(stream, request))
            return false;
        stream >> started;
        break;
    case Type::Decision:
    case Type::DecisionForAll:
        stream >> from >> given;
        answer = Answer(given);
        break;
    case Type::Aside:
        stream >> to >> temporary;
        break;
    case Type::Damage:
    case Type::Cancelled:
    case Type::Resumed:
        break;
    case Type::Source:
    case Type::Place:
        stream >> source >> identity.device >> identity.inode >> mode >> size >> modified >> born >>
            fileSystem;
        break;
    case Type::Made:
    case Type::Moved:
    case Type::Joined:
        stream >> source >> from >> to >> identity.device >> identity.inode >> origin.device >>
            origin.inode >> replaces >> mode >> user >> group >> links >> size >> modified >>
            accessed >> madeSize >> madeModified;
        break;
    default:
        return false;
    }
    return stream.status() == QDataStream::Ok && given <= quint8(Answer::LeaveOut);
}

#include "platform/share_tool.h"

#include "platform/sharing.h"

#include <QPointer>

namespace
{

/// In which a service that is not even there shows itself as such.
constexpr qint64 AnswerMilliseconds = 2500;

QPointer<Sharing> current;

} // namespace

bool SHARE_Tool::shareByBt(const OBJECT_INFO& info, const QString& path, [[maybe_unused]] bool flag)
{
    if (current && !current->isOver())
        return false;
    const QDeadlineTimer deadline(AnswerMilliseconds);
    auto push = ObexPush::open(deadline);
    auto devices = push != nullptr ? BluezDevices::open(deadline) : nullptr;
    if (devices == nullptr)
        return false;
    const qsizetype slash = info.objectName.startsWith(QLatin1Char('/')) ? 1 : 0;
    current = new Sharing(std::move(devices), std::move(push), info.objectName.mid(slash), path);
    return true;
}

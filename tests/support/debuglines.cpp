#include "tests/support/debuglines.h"

#include <algorithm>

namespace
{

QStringList collected;
QtMessageHandler handlerBefore = nullptr;

void collect(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message)
{
    collected.append(message);
}

} // namespace

DebugLines::DebugLines()
{
    collected.clear();
    handlerBefore = qInstallMessageHandler(collect);
}

DebugLines::~DebugLines()
{
    qInstallMessageHandler(handlerBefore);
}

QStringList DebugLines::all() const
{
    return collected;
}

bool DebugLines::contains(const QString& message) const
{
    return collected.contains(message);
}

bool DebugLines::mentions(const QString& part) const
{
    return std::any_of(collected.cbegin(), collected.cend(),
                       [&part](const QString& message) { return message.contains(part); });
}

void DebugLines::clear()
{
    collected.clear();
}

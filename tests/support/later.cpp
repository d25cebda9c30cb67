#include "tests/support/later.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

namespace
{

constexpr int LongestMilliseconds = 10000;

void poll(const QDeadlineTimer& deadline, const std::function<bool()>& condition,
          const std::function<void()>& action)
{
    if (condition())
        return action();
    if (deadline.hasExpired())
        qFatal("what the test waits for does not happen");
    QTimer::singleShot(1, qApp, [=] { poll(deadline, condition, action); });
}

} // namespace

void once(const std::function<bool()>& condition, const std::function<void()>& action)
{
    const QDeadlineTimer deadline(LongestMilliseconds);
    QTimer::singleShot(0, qApp, [=] { poll(deadline, condition, action); });
}

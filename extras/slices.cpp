#include "extras/slices.h"

#include "extras/operationbox.h"
#include "platform/zapplication.h"

#include <QElapsedTimer>
#include <QTimer>

namespace
{

constexpr int ShowAfterMs = 300;
constexpr int RefreshMs = 200;
constexpr int SliceMs = 30;

} // namespace

bool runInSlices(const QString& title, const std::function<bool(int)>& step,
                 const std::function<QStringList()>& lines)
{
    OperationBox box(title);
    bool isDone = false;
    bool isStopped = false;
    QObject::connect(&box, &OperationBox::cancelled, &box, [&isStopped] { isStopped = true; });
    QElapsedTimer begun;
    QElapsedTimer refreshed;
    begun.start();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &box, [&] {
        isDone = isDone || (!isStopped && !step(SliceMs));
        // It may end under a question, which may stand for long.
        if (isDone || isStopped)
            timer.stop();
        if (isDone || isStopped || begun.elapsed() < ShowAfterMs ||
            (refreshed.isValid() && refreshed.elapsed() < RefreshMs))
            return;
        refreshed.start();
        box.showLines(lines(), -1);
    });
    timer.start(0);
    ZApplication::waitUntil([&isDone, &isStopped] { return isDone || isStopped; });
    return isDone;
}

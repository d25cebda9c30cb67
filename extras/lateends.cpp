#include "extras/lateends.h"

#include "files/names.h"

#include <memory>
#include <mutex>
#include <utility>

namespace
{

struct Hearer {
    std::mutex mutex;
    QObject* receiver = nullptr;
    LateEnds::Changed changed;
};

/// Each thread that may tell keeps it, so that the end of the program takes it from nobody.
const std::shared_ptr<Hearer>& theHearer()
{
    static const std::shared_ptr<Hearer> hearer = std::make_shared<Hearer>();
    return hearer;
}

} // namespace

void LateEnds::setReceiver(QObject* receiver, Changed changed)
{
    const std::shared_ptr<Hearer>& hearer = theHearer();
    {
        const std::lock_guard lock(hearer->mutex);
        hearer->changed = std::move(changed);
        if (std::exchange(hearer->receiver, receiver) == receiver)
            return;
    }
    QObject::connect(receiver, &QObject::destroyed, [hearer](const QObject* gone) {
        const std::lock_guard lock(hearer->mutex);
        if (hearer->receiver == gone)
            hearer->receiver = nullptr;
    });
}

std::function<void()> LateEnds::teller(const QList<QByteArray>& folders)
{
    QStringList names;
    for (const QByteArray& folder : folders) {
        if (const QString name = decodeName(folder); !names.contains(name))
            names.append(name);
    }
    return [hearer = theHearer(), names] {
        // A receiver that is about to go waits for the lock, and takes its calls with it.
        const std::lock_guard lock(hearer->mutex);
        if (hearer->receiver != nullptr)
            QMetaObject::invokeMethod(
                hearer->receiver, [changed = hearer->changed, names] { changed(names); },
                Qt::QueuedConnection);
    };
}

// The program, started as always, but ending when its first listing has been painted.

#include "browser/filebrowserftab.h"
#include "platform/zapplication.h"
#include "shell/startup.h"

#include <QCoreApplication>
#include <QEvent>

namespace
{

class ListingWatcher : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        const auto* panel = qobject_cast<FileBrowserFtab*>(watched->parent());
        if (panel != nullptr && panel->count() > 0) {
            QMetaObject::invokeMethod(qApp, &ZApplication::quit, Qt::QueuedConnection);
        }
        return false;
    }
};

void watchForListing()
{
    qApp->installEventFilter(new ListingWatcher(qApp));
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchForListing)

int main(int argc, char** argv)
{
    return startQuarn(argc, argv);
}

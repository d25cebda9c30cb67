#include "shell/afterstart.h"

#include "browser/filebrowserftab.h"
#include "platform/zscreen.h"
#include "shell/fm.h"

#include <QEvent>
#include <QTimer>

#include <utility>

AfterStart::AfterStart(FM* window, std::function<bool()> isWanted, std::function<void()> run)
    : QObject(window), window_(window), isWanted_(std::move(isWanted)), run_(std::move(run))
{
    window->panel(FM::Panel1)->viewport()->installEventFilter(this);
}

bool AfterStart::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Paint) {
        watched->removeEventFilter(this);
        QTimer::singleShot(0, this, &AfterStart::look);
    }
    return QObject::eventFilter(watched, event);
}

void AfterStart::look()
{
    if (!isWanted_())
        return;
    isDue_ = true;
    connect(ZScreen::instance(), &ZScreen::softKeysChanged, this, &AfterStart::runWhenFree,
            Qt::QueuedConnection);
    runWhenFree();
}

/// The start box, or what the user has begun meanwhile, comes first.
void AfterStart::runWhenFree()
{
    if (!isDue_ || ZScreen::instance()->active() != window_)
        return;
    isDue_ = false;
    run_();
}

#include "shell/unfinishedoffer.h"

#include "browser/filebrowserftab.h"
#include "extras/openextras.h"
#include "platform/zscreen.h"
#include "shell/fm.h"

#include <QEvent>
#include <QTimer>

UnfinishedOffer::UnfinishedOffer(FM* window) : QObject(window), window_(window)
{
    window->panel(FM::Panel1)->viewport()->installEventFilter(this);
}

bool UnfinishedOffer::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Paint) {
        watched->removeEventFilter(this);
        QTimer::singleShot(0, this, &UnfinishedOffer::look);
    }
    return QObject::eventFilter(watched, event);
}

void UnfinishedOffer::look()
{
    if (!hasUnfinished())
        return;
    isDue_ = true;
    connect(ZScreen::instance(), &ZScreen::softKeysChanged, this, &UnfinishedOffer::offerWhenFree,
            Qt::QueuedConnection);
    offerWhenFree();
}

/// The start box, or what the user has begun meanwhile, comes first.
void UnfinishedOffer::offerWhenFree()
{
    if (!isDue_ || ZScreen::instance()->active() != window_)
        return;
    isDue_ = false;
    window_->offerUnfinished();
}

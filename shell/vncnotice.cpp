#include "shell/vncnotice.h"

#include "lang/texts.h"
#include "platform/zscreen.h"
#include "shell/fm.h"
#include "widgets/kwidget.h"

#include <utility>

VncNotice::VncNotice(FM* window) : QObject(window), window_(window)
{
    const ZScreen* screen = ZScreen::instance();
    connect(screen, &ZScreen::guestShown, this, [this](int port) {
        port_ = port;
        tellWhenFree();
    });
    // The busy box, or a question, comes first.
    connect(screen, &ZScreen::softKeysChanged, this, &VncNotice::tellWhenFree,
            Qt::QueuedConnection);
}

void VncNotice::tellWhenFree()
{
    if (port_ == 0 || ZScreen::instance()->active() != window_)
        return;
    textView->showText(QStringLiteral("VNC"), withNumber(LANG_VNC_PORT, std::exchange(port_, 0)),
                       Qt::AlignHCenter, QStringLiteral("res/img/open_with.png"), kWidget::Message);
}

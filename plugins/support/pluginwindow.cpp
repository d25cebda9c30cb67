#include "plugins/support/pluginwindow.h"

#include "files/programnames.h"
#include "platform/keymap.h"
#include "platform/zapplication.h"
#include "platform/zlistrowpainter.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "plugins/support/plugintexts.h"

#include <QApplication>
#include <QFontMetrics>

PluginWindow::PluginWindow(const QString& title)
    : ZKbMainWidget(TitleUnderlined, nullptr, "ZMainWidget", {}),
      softKey_(new ZSoftKey(QString(), this, this))
{
    setFont(ZSkinService::font(ProgramNames::Font, 14, 25));
    resize(ZScreen::Width, ZScreen::Height);
    setFocusPolicy(Qt::StrongFocus);
    qApp->installEventFilter(this);
    setMainWidgetTitle(title);
    setSoftKey(softKey_);
    setSoftKeyTexts(QString(), pluginTexts().exit);
    connect(softKey_, &ZSoftKey::pressed, this, [this](int key) {
        if (key == ZSoftKey::Right)
            rightSoftKey();
        else
            leftSoftKey();
    });
}

PluginWindow::~PluginWindow() = default;

void PluginWindow::setSoftKeyTexts(const QString& left, const QString& right)
{
    softKey_->setText(ZSoftKey::Left, left);
    softKey_->setText(ZSoftKey::Right, right);
}

void PluginWindow::showTitle(const QString& name, const QString& detail)
{
    constexpr int Margins = 16;
    const QFontMetrics metrics(titleFont(font()));
    const int width = ZScreen::Width - Margins;
    const QString shown = metrics.elidedText(detail, Qt::ElideRight, width * 2 / 3);
    const QString end = shown.isEmpty() ? QString() : QStringLiteral(" \u00b7 ") + shown;
    const int room = width - metrics.horizontalAdvance(end);
    setMainWidgetTitle(metrics.elidedText(ZListRowPainter::visibleText(name), Qt::ElideMiddle, room,
                                          Qt::TextSingleLine) +
                       end);
}

void PluginWindow::setWholeScreen(bool on)
{
    if (wholeScreen_ == on)
        return;
    wholeScreen_ = on;
    softKey_->setVisible(!on);
    fullScreenModeChanged(on);
}

void PluginWindow::end()
{
    ZApplication::quit();
}

void PluginWindow::leftSoftKey() {}

void PluginWindow::rightSoftKey()
{
    end();
}

void PluginWindow::keyPressed(int code)
{
    if (code == '*')
        fullScreenModeChanged(!isFullScreenMode());
}

void PluginWindow::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    const int code = PhoneKey::code(*event);
    // The bar has answered to these.
    if (code != PhoneKey::SoftLeft && code != PhoneKey::SoftRight)
        keyPressed(code);
}

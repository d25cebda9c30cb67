#include "plugins/textview/textwindow.h"

#include "files/paths.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/textpane.h"

#include <QVBoxLayout>

TextWindow::TextWindow(const QString& path)
    : PluginWindow(QStringLiteral("TextView")),
      name_(lastPart(path)),
      pane_(new TextPane(file_, this))
{
    contentLayout()->addWidget(pane_);
    QString problem;
    opened_ = file_.open(path, problem);
    pane_->setNotice(opened_ ? pluginTexts().fileEmpty : problem, !opened_);
    connect(pane_, &TextPane::moved, this, &TextWindow::updateTexts);
    updateTexts();
}

void TextWindow::keyPressed(int code)
{
    if (code == '0')
        leftSoftKey();
    else if (!pane_->handleKey(code))
        PluginWindow::keyPressed(code);
}

void TextWindow::leftSoftKey()
{
    if (!opened_)
        return;
    pane_->setWrapping(!pane_->isWrapping());
    updateTexts();
}

void TextWindow::updateTexts()
{
    const PluginTexts& texts = pluginTexts();
    if (pane_->rows().isEmpty()) {
        showTitle(name_.isEmpty() ? QStringLiteral("TextView") : name_, QString());
        setSoftKeyTexts(QString(), texts.exit);
        return;
    }
    showTitle(name_, QStringLiteral("%1%").arg(pane_->percent()));
    setSoftKeyTexts(pane_->isWrapping() ? texts.longLines : texts.wrapLines, texts.exit);
}

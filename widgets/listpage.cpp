#include "widgets/listpage.h"

#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"

#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace
{

constexpr int LineFontSize = 13;

QFont sized(QFont font, int pixels)
{
    font.setPixelSize(pixels);
    return font;
}

} // namespace

ListPage::ListPage(const QString& title, const char* name, const QFont& font, int detailSize)
    : ZMainWidget(TitleUnderlined, ZScreen::instance(), name, {}),
      detailFont_(sized(font, detailSize))
{
    hide();
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
    setFont(font);
    setMainWidgetTitle(title);
    list_ = new ZListBox(QStringLiteral("%M"), this, 0, ZSkinService::clsListBox);
    for (const bool highlighted : {false, true})
        list_->setItemFont(2, detailFont_, highlighted);
    keys_ = new ZSoftKey(QString(), this, this);
    contentLayout()->addWidget(list_, 1);
    contentLayout()->addWidget(keys_);
    setFocusProxy(list_);
    connect(keys_, &ZSoftKey::pressed, this, &ListPage::softKeyPressed);
}

QLabel* ListPage::addLine(Line place, Tone tone)
{
    const auto& look = ZSkinService::look(ZSkinService::clsMainWidget);
    auto* line = new QLabel(this);
    line->setTextFormat(Qt::PlainText);
    line->setFont(sized(font(), LineFontSize));
    line->setContentsMargins(LineMargin, 1, LineMargin, 1);
    line->setAutoFillBackground(true);
    QPalette colours = line->palette();
    colours.setColor(QPalette::Window, look.background);
    colours.setColor(QPalette::WindowText, tone == Tone::Quiet ? look.secondaryText : look.text);
    line->setPalette(colours);
    QWidget* behind = place == Line::Above ? static_cast<QWidget*>(list_) : keys_;
    // Programs that read the screen take the order from this.
    line->stackUnder(behind);
    contentLayout()->insertWidget(contentLayout()->indexOf(behind), line);
    return line;
}

int ListPage::detailRoom()
{
    constexpr int Left = ZSkinService::MarkWidth + 1;
    constexpr int Right = ZSkinService::ScrollBarWidth + 2;
    return ZScreen::Width - Left - Right;
}

void ListPage::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    // A key that is still held from before the page came up must not answer it.
    if (event->isAutoRepeat())
        return;
    const int code = PhoneKey::code(*event);
    if (code == PhoneKey::SoftLeft || code == PhoneKey::SoftRight)
        softKeyPressed(code == PhoneKey::SoftLeft ? ZSoftKey::Left : ZSoftKey::Right);
    else
        otherKeyPressed(code);
}

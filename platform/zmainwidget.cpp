#include "platform/zmainwidget.h"

#include "platform/keymap.h"
#include "platform/zaccessible.h"
#include "platform/zaccessiblewidget.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"

#include <QPainter>
#include <QVBoxLayout>

class ZMainWidget::Header : public QWidget, public ZAccessibleSource
{
public:
    explicit Header(QWidget* parent) : QWidget(parent)
    {
        setFixedHeight(ZSkinService::HeaderHeight);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

    QAccessibleInterface* makeAccessible() override
    {
        return new ZAccessibleWidget(this, QAccessible::Heading);
    }

    QString title;
    int type = NoHeader;

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const auto& look = ZSkinService::look(ZSkinService::clsMainWidget);
        QPainter painter(this);
        painter.fillRect(rect(), look.background);
        painter.setFont(titleFont(font()));
        painter.setPen(look.text);
        const auto align = type == TitleLeft ? Qt::AlignLeft : Qt::AlignHCenter;
        const QRect room = rect().adjusted(6, 0, -6, -1);
        painter.drawText(room, int(align | Qt::AlignVCenter | Qt::TextSingleLine),
                         painter.fontMetrics().elidedText(title, Qt::ElideRight, room.width()));
        if (type == TitleUnderlined)
            painter.fillRect(0, height() - 2, width(), 2, look.mark);
    }
};

ZMainWidget::ZMainWidget(int headerType, QWidget* parent, const char* name, Qt::WindowFlags flags)
    : QWidget(parent != nullptr ? parent : ZScreen::instance(), flags)
{
    setObjectName(QLatin1String(name));
    setAttribute(Qt::WA_OpaquePaintEvent);
    if (parent == nullptr)
        ZScreen::instance()->place(this, ZScreen::Layer::Main);
    resize(ZScreen::Width, ZScreen::Height);
    outer_ = new QVBoxLayout(this);
    outer_->setContentsMargins(0, 0, 0, 0);
    outer_->setSpacing(0);
    header_ = new Header(this);
    content_ = new QVBoxLayout;
    content_->setSpacing(0);
    outer_->addWidget(header_);
    outer_->addLayout(content_, 1);
    setHeaderType(headerType);
}

QFont ZMainWidget::titleFont(const QFont& font)
{
    constexpr int TitleSize = 15;
    QFont bold = font;
    bold.setPixelSize(TitleSize);
    bold.setWeight(QFont::Bold);
    return bold;
}

void ZMainWidget::setMainWidgetTitle(const QString& title)
{
    header_->title = title;
    header_->setAccessibleName(title);
    header_->update();
    setWindowTitle(title);
}

QString ZMainWidget::mainWidgetTitle() const
{
    return header_->title;
}

void ZMainWidget::setHeaderType(int type)
{
    header_->type = type >= NoHeader && type <= TitleUnderlined ? type : TitleUnderlined;
    updateHeader();
}

int ZMainWidget::headerType() const
{
    return header_->type;
}

void ZMainWidget::fullScreenModeChanged(bool on)
{
    fullScreen_ = on;
    updateHeader();
}

bool ZMainWidget::isFullScreenMode() const
{
    return fullScreen_;
}

QVBoxLayout* ZMainWidget::contentLayout() const
{
    return content_;
}

void ZMainWidget::updateHeader()
{
    header_->setVisible(!fullScreen_ && header_->type != NoHeader);
    header_->update();
}

ZKbMainWidget::ZKbMainWidget(int headerType, QWidget* parent, const char* name,
                             Qt::WindowFlags flags)
    : ZMainWidget(headerType, parent, name, flags)
{
}

void ZKbMainWidget::setSoftKey(ZSoftKey* softKey)
{
    softKey_ = softKey;
    outer_->addWidget(softKey);
}

bool ZKbMainWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || softKey_ == nullptr || !watched->isWidgetType())
        return ZMainWidget::eventFilter(watched, event);
    auto* receiver = static_cast<QWidget*>(watched);
    if (ZScreen::instance()->active() != this || !ZScreen::instance()->takesInput(this) ||
        (receiver != this && !isAncestorOf(receiver)))
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->isAutoRepeat())
        return false;
    switch (PhoneKey::code(*key)) {
    case PhoneKey::SoftLeft:
        return softKey_->activate(ZSoftKey::Left);
    case PhoneKey::SoftRight:
        return softKey_->activate(ZSoftKey::Right);
    default:
        return false;
    }
}

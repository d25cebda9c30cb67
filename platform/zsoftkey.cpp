#include "platform/zsoftkey.h"

#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"

#include <QMetaMethod>
#include <QMouseEvent>
#include <QPainter>

namespace
{

bool isKey(int key)
{
    return key == ZSoftKey::Left || key == ZSoftKey::Right;
}

} // namespace

ZSoftKey::ZSoftKey([[maybe_unused]] const QString& resource, QWidget* parent,
                   [[maybe_unused]] QWidget* receiver)
    : QWidget(parent)
{
    setFixedHeight(ZSkinService::SoftKeyHeight);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

ZSoftKey::~ZSoftKey() = default;

void ZSoftKey::setText(int key, const QString& text, [[maybe_unused]] int priority)
{
    if (!isKey(key))
        return;
    sides_.at(size_t(key)).text = text;
    update();
}

QString ZSoftKey::text(int key) const
{
    return isKey(key) ? sides_.at(size_t(key)).text : QString();
}

void ZSoftKey::setOptMenu(int key, ZOptionsMenu* menu)
{
    if (isKey(key))
        sides_.at(size_t(key)).menu = menu;
}

ZOptionsMenu* ZSoftKey::optMenu(int key) const
{
    return isKey(key) ? sides_.at(size_t(key)).menu.data() : nullptr;
}

bool ZSoftKey::activate(int key)
{
    ZOptionsMenu* menu = optMenu(key);
    if (menu == nullptr) {
        // Once answered, a key must not go on from widget to widget and come by here again.
        const bool answered = isSignalConnected(QMetaMethod::fromSignal(&ZSoftKey::pressed));
        emit pressed(key);
        return answered;
    }
    menu->show();
    return true;
}

void ZSoftKey::paintEvent(QPaintEvent* /*event*/)
{
    const auto& look = ZSkinService::look(ZSkinService::clsSoftKey);
    QPainter painter(this);
    painter.fillRect(rect(), look.background);
    QFont barFont = font();
    barFont.setPixelSize(14);
    painter.setFont(barFont);
    painter.setPen(look.text);
    const QRect inner = rect().adjusted(6, 0, -6, -1);
    painter.drawText(inner, int(Qt::AlignLeft | Qt::AlignVCenter), sides_.at(Left).text);
    painter.drawText(inner, int(Qt::AlignRight | Qt::AlignVCenter), sides_.at(Right).text);
}

void ZSoftKey::mousePressEvent(QMouseEvent* event)
{
    activate(event->position().x() < width() / 2.0 ? Left : Right);
    event->accept();
}

#include "platform/zsoftkey.h"

#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QMetaMethod>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace
{

constexpr int BarFontSize = 14;
constexpr int Margin = 6;
/// What at least is between the two texts.
constexpr int Gap = 10;

bool isKey(int key)
{
    return key == ZSoftKey::Left || key == ZSoftKey::Right;
}

/// How wide a text may be beside another: a short one leaves the rest of the bar to a long one.
int roomBeside(int room, int other)
{
    return std::max(room - Gap - other, (room - Gap) / 2);
}

} // namespace

ZSoftKey::ZSoftKey([[maybe_unused]] const QString& resource, QWidget* parent,
                   [[maybe_unused]] QWidget* receiver)
    : QWidget(parent)
{
    setFixedHeight(ZSkinService::SoftKeyHeight);
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(ZScreen::instance(), &ZScreen::softKeysChanged, this, &ZSoftKey::refresh);
}

ZSoftKey::~ZSoftKey() = default;

void ZSoftKey::setText(int key, const QString& text, [[maybe_unused]] int priority)
{
    if (!isKey(key))
        return;
    sides_.at(size_t(key)).text = text;
    refresh();
}

QString ZSoftKey::text(int key) const
{
    return isKey(key) ? sides_.at(size_t(key)).text : QString();
}

QString ZSoftKey::shownText(int key) const
{
    return isKey(key) ? wantedTexts().at(size_t(key)) : QString();
}

ZSoftKey::Texts ZSoftKey::wantedTexts() const
{
    const ZScreen* screen = ZScreen::instance();
    const bool inert = screen->active() != nullptr && !screen->takesInput(this);
    return inert ? screen->softKeys().texts : Texts{sides_[Left].text, sides_[Right].text};
}

/// Many things come and go over the bar that change nothing in it.
void ZSoftKey::refresh()
{
    const Texts wanted = wantedTexts();
    if (wanted == shown_)
        return;
    shown_ = wanted;
    update();
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
    barFont.setPixelSize(BarFontSize);
    painter.setFont(barFont);
    painter.setPen(look.text);
    shown_ = wantedTexts();
    const QRect inner = rect().adjusted(Margin, 0, -Margin, -1);
    const QFontMetrics metrics = painter.fontMetrics();
    for (const size_t key : {size_t(Left), size_t(Right)}) {
        const int other =
            shown_.at(1 - key).isEmpty() ? -Gap : metrics.horizontalAdvance(shown_.at(1 - key));
        const auto align = key == Left ? Qt::AlignLeft : Qt::AlignRight;
        painter.drawText(
            inner, int(align | Qt::AlignVCenter | Qt::TextSingleLine),
            metrics.elidedText(shown_.at(key), Qt::ElideRight, roomBeside(inner.width(), other)));
    }
}

void ZSoftKey::mousePressEvent(QMouseEvent* event)
{
    activate(event->position().x() < width() / 2.0 ? Left : Right);
    event->accept();
}

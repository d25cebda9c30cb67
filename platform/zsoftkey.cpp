#include "platform/zsoftkey.h"

#include "platform/zlistrowpainter.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QMetaMethod>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace
{

constexpr int BarFontSize = 14;
constexpr int StatusFontSize = 13;
constexpr int Margin = 6;
/// What at least is between the two texts.
constexpr int Gap = 10;
constexpr int StatusGap = 8;
/// With less room a name tells nothing.
constexpr int SmallestName = 30;

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

bool ZSoftKey::isInert() const
{
    const ZScreen* screen = ZScreen::instance();
    return screen->active() != nullptr && !screen->takesInput(this);
}

ZSoftKey::Texts ZSoftKey::wantedTexts() const
{
    return isInert() ? ZScreen::instance()->softKeys().texts
                     : Texts{sides_[Left].text, sides_[Right].text};
}

void ZSoftKey::setStatus(const QString& name, const QString& text)
{
    status_ = {ZListRowPainter::visibleText(name), text};
    setAccessibleDescription(name.isEmpty() ? text : name + QStringLiteral(", ") + text);
    refresh();
}

QStringList ZSoftKey::shownStatus() const
{
    const Status status = wanted().status;
    return {status.name, status.text};
}

ZSoftKey::Content ZSoftKey::wanted() const
{
    Content content{wantedTexts(), {}};
    if (!isInert() && content.texts[Right].isEmpty()) {
        const int left = QFontMetrics(fontOf(BarFontSize)).horizontalAdvance(content.texts[Left]);
        content.status = fitting(inner().width() - (left > 0 ? left + Gap : 0));
    }
    return content;
}

/// What of the status fits into a width.
ZSoftKey::Status ZSoftKey::fitting(int room) const
{
    const QFontMetrics metrics(fontOf(StatusFontSize));
    const int needed = metrics.horizontalAdvance(status_.text);
    if (needed > room)
        return {};
    const int left = room - (needed > 0 ? needed + StatusGap : 0);
    const QString name = metrics.elidedText(status_.name, Qt::ElideLeft, std::max(left, 0));
    const bool isTold = left >= SmallestName || name == status_.name;
    return {isTold ? name : QString(), status_.text};
}

QRect ZSoftKey::inner() const
{
    return rect().adjusted(Margin, 0, -Margin, -1);
}

QFont ZSoftKey::fontOf(int size) const
{
    QFont barFont = font();
    barFont.setPixelSize(size);
    return barFont;
}

/// Many things come and go over the bar that change nothing in it.
void ZSoftKey::refresh()
{
    const Content content = wanted();
    if (content == shown_)
        return;
    const Content before = std::exchange(shown_, content);
    update();
    tellNames(before);
}

void ZSoftKey::tellNames(const Content& before)
{
    for (const int key : {int(Left), int(Right)}) {
        if (before.texts.at(size_t(key)) != shown_.texts.at(size_t(key)))
            ZAccessible::tellName(this, key);
    }
    if (!(before.status == shown_.status))
        ZAccessible::tellName(this, StatusPart);
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
    // What the key says, the menu is called by programs that read the screen.
    menu->setAccessibleName(text(key));
    menu->show();
    return true;
}

void ZSoftKey::paintEvent(QPaintEvent* /*event*/)
{
    const auto& look = ZSkinService::look(ZSkinService::clsSoftKey);
    QPainter painter(this);
    painter.fillRect(rect(), look.background);
    painter.setFont(fontOf(BarFontSize));
    painter.setPen(look.text);
    shown_ = wanted();
    const QFontMetrics metrics = painter.fontMetrics();
    for (const size_t key : {size_t(Left), size_t(Right)}) {
        const QString& beside = shown_.texts.at(1 - key);
        const int other = beside.isEmpty() ? -Gap : metrics.horizontalAdvance(beside);
        const auto align = key == Left ? Qt::AlignLeft : Qt::AlignRight;
        painter.drawText(inner(), int(align | Qt::AlignVCenter | Qt::TextSingleLine),
                         metrics.elidedText(shown_.texts.at(key), Qt::ElideRight,
                                            roomBeside(inner().width(), other)));
    }
    paintStatus(painter);
}

void ZSoftKey::paintStatus(QPainter& painter) const
{
    constexpr int Align = Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine;
    painter.setFont(fontOf(StatusFontSize));
    painter.setPen(ZSkinService::look(ZSkinService::clsSoftKey).secondaryText);
    QRect room = inner();
    painter.drawText(room, Align, shown_.status.text);
    const int behind = painter.fontMetrics().horizontalAdvance(shown_.status.text);
    if (behind > 0)
        room.setRight(room.right() - behind - StatusGap);
    painter.drawText(room, Align, shown_.status.name);
}

void ZSoftKey::mousePressEvent(QMouseEvent* event)
{
    activate(event->position().x() < width() / 2.0 ? Left : Right);
    event->accept();
}

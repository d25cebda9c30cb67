#include "sharing/sharedevicelist.h"

#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "sharing/sharetexts.h"

#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace
{

constexpr int ListFont = 14;
constexpr int LineFont = 13;
constexpr int LineMargin = 6;

QFont sized(QFont font, int pixels)
{
    font.setPixelSize(pixels);
    return font;
}

/// A line between the header and the list.
QLabel* makeLine(QWidget* parent, const QFont& font, const QColor& text, const QColor& ground)
{
    auto* line = new QLabel(parent);
    line->setTextFormat(Qt::PlainText);
    line->setFont(sized(font, LineFont));
    line->setContentsMargins(LineMargin, 1, LineMargin, 1);
    line->setAutoFillBackground(true);
    QPalette colours = line->palette();
    colours.setColor(QPalette::Window, ground);
    colours.setColor(QPalette::WindowText, text);
    line->setPalette(colours);
    return line;
}

QString elided(const QLabel& line, const QString& text)
{
    const int room = ZScreen::Width - 2 * LineMargin;
    return line.fontMetrics().elidedText(ZListRowPainter::visibleText(text), Qt::ElideMiddle, room);
}

/// A word for the end of a row's second line, as long as what stands before it leaves room.
QString wordBehind(const QString& before, const QString& word, const QFont& font)
{
    constexpr int Beside = 24; // the edges, the scroll bar and a gap
    const QFontMetrics metrics(font);
    return metrics.elidedText(word, Qt::ElideRight,
                              ZScreen::Width - Beside - metrics.horizontalAdvance(before));
}

ZListBoxItem* makeRow(ZListBox* list, const BluetoothDevice& device)
{
    auto* row = new ZListBoxItem(list, QStringLiteral("%M"));
    row->appendSubItem(1, device.name.isEmpty() ? device.address : device.name, false);
    QString detail = device.name.isEmpty() ? QString() : device.address;
    if (device.paired)
        detail += QLatin1Char('\t') +
                  wordBehind(detail, ShareTexts::instance().paired, sized(list->font(), ListFont));
    row->appendSubItem(1, detail, false);
    return row;
}

} // namespace

ShareDeviceList::ShareDeviceList(const QString& file, const QFont& font)
    : ZMainWidget(TitleUnderlined, ZScreen::instance(), "ShareDeviceList", {})
{
    const ShareTexts& texts = ShareTexts::instance();
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
    setFont(font);
    setMainWidgetTitle(texts.title);
    const auto& dark = ZSkinService::look(ZSkinService::clsMainWidget);
    QLabel* name = makeLine(this, font, dark.text, dark.background);
    name->setText(elided(*name, file));
    status_ = makeLine(this, font, dark.secondaryText, dark.background);
    list_ = new ZListBox(QStringLiteral("%M"), this, 0, ZSkinService::clsListBox);
    list_->setItemFont(2, sized(font, ListFont), false);
    list_->setItemFont(2, sized(font, ListFont), true);
    keys_ = new ZSoftKey(QString(), this, this);
    keys_->setText(ZSoftKey::Right, texts.cancel);
    contentLayout()->addWidget(name);
    contentLayout()->addWidget(status_);
    contentLayout()->addWidget(list_, 1);
    contentLayout()->addWidget(keys_);
    setFocusProxy(list_);
    connect(list_, &ZListBox::selected, this, &ShareDeviceList::choose);
    connect(keys_, &ZSoftKey::pressed, this, &ShareDeviceList::softKey);
    setDevices({}, true);
}

void ShareDeviceList::setDevices(const QList<BluetoothDevice>& devices, bool searching)
{
    const ShareTexts& texts = ShareTexts::instance();
    status_->setText(elided(*status_, searching           ? texts.searching
                                      : devices.isEmpty() ? texts.noDevices
                                                          : texts.devices));
    // Without a device to send to the key does nothing.
    keys_->setText(ZSoftKey::Left, devices.isEmpty() ? QString() : texts.send);
    if (devices == devices_)
        return;
    const int current = list_->currentItem();
    const QString path = current >= 0 ? devices_.value(current).path : QString();
    const int top = list_->topItem();
    devices_ = devices;
    list_->clear();
    for (const BluetoothDevice& device : devices)
        list_->insertItem(makeRow(list_, device));
    const auto same = std::find_if(devices.begin(), devices.end(),
                                   [&path](const auto& device) { return device.path == path; });
    list_->setBottomItem(top + list_->visibleItems() - 1);
    // Of a device that has gone, the one that took its place; at first the first.
    list_->setCurrentItem(same != devices.end() ? int(same - devices.begin())
                                                : std::max(current, 0));
}

QString ShareDeviceList::status() const
{
    return status_->text();
}

void ShareDeviceList::choose(int row)
{
    if (row >= 0 && row < devices_.size())
        emit chosen(BluetoothDevice(devices_.at(row)));
}

void ShareDeviceList::softKey(int key)
{
    if (key == ZSoftKey::Left)
        choose(list_->currentItem());
    else
        emit cancelled();
}

void ShareDeviceList::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    const int code = PhoneKey::code(*event);
    if (!event->isAutoRepeat() && (code == PhoneKey::SoftLeft || code == PhoneKey::SoftRight))
        softKey(code == PhoneKey::SoftLeft ? ZSoftKey::Left : ZSoftKey::Right);
}
